#!/usr/bin/env python3
"""Makes a source that includes a public header alone, twice, and holds the examples of its comments.

Usage: Tests/Headers/examples.py HEADER SOURCE

Each example, which stands between "@code" and "@endcode", becomes the body of a function of its own.
"""

import pathlib
import re
import sys

EXAMPLE = re.compile(r"^ *///? ?@code\n(.*?)^ *///? ?@endcode", re.M | re.S)
FUNCTION = """
void example{number}() {{
    using namespace Imaging;
    using namespace Imaging::Platform;
{body}
}}
"""


def source_of(header):
    functions = []
    for number, example in enumerate(EXAMPLE.findall(pathlib.Path(header).read_text()), 1):
        body = "\n".join(re.sub(r"^ */// ?", "    ", line) for line in example.splitlines())
        functions.append(FUNCTION.format(number=number, body=body))
    include = f"#include <{header}>\n"
    return include + include + ("\nnamespace Examples {\n" + "".join(functions) + "\n}\n" if functions else "")


if __name__ == "__main__":
    pathlib.Path(sys.argv[2]).write_text(source_of(sys.argv[1]))
