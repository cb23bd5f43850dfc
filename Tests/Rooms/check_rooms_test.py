#!/usr/bin/env python3
"""What cmake/check-rooms.py complains about, on small trees made for it."""

import pathlib
import subprocess
import tempfile
import unittest

CHECKER = pathlib.Path(__file__).resolve().parent.parent.parent / "cmake" / "check-rooms.py"

# A tree that is in order: a source with its header, its test, and a user of it in a room above.
GOOD = {
    "Platform/Foundation/Data.h": "",
    "Platform/Foundation/Data.cpp": '// Bytes.\n#include "Platform/Foundation/Data.h"\n',
    "Platform/Pixels/Rows/Layout.h": '#include "Platform/Foundation/Data.h"\n',
    "Imaging/Image.h": '#include "Platform/Foundation/Data.h"\n',
    "Imaging/Imaging.h": '#include "Imaging/Image.h"\n',
    "Tests/DataTest.cpp": "",
}


class CheckRooms(unittest.TestCase):
    def check(self, *arguments, **changes):
        """The checker's status and all that it says of the good tree with these files added or replaced."""
        with tempfile.TemporaryDirectory() as folder:
            for name, text in {**GOOD, **changes.get("files", {})}.items():
                path = pathlib.Path(folder) / name
                path.parent.mkdir(parents=True, exist_ok=True)
                path.write_text(text)
            result = subprocess.run([CHECKER, folder, *arguments], capture_output=True, text=True, check=False)
            return result.returncode, result.stdout + result.stderr

    def assert_complains(self, files, what):
        status, text = self.check(files=files)
        self.assertEqual(status, 1)
        self.assertIn(what, text)
        self.assertIn(" 1 complaints", text)

    def test_a_tree_in_order_passes(self):
        self.assertEqual(self.check()[0], 0, self.check()[1])

    def test_an_include_that_points_up_is_told(self):
        self.assert_complains({"Platform/Foundation/Url.h": '#include "Platform/Pixels/Rows/Layout.h"\n'},
                              "Platform/Foundation lies below or beside Platform/Pixels")

    def test_rooms_beside_each_other_know_nothing_of_each_other(self):
        self.assert_complains({"Platform/Codecs/Codec.h": "",
                               "Platform/Painter/Painter.h": '#include "Platform/Codecs/Codec.h"\n'},
                              "Platform/Painter lies below or beside Platform/Codecs")

    def test_internal_headers_of_another_library_are_told(self):
        self.assert_complains({"Show/Show.h": '#include "Platform/Pixels/Rows/Layout.h"\n'},
                              "is internal to the library Imaging")

    def test_a_folder_in_no_room_is_told(self):
        self.assert_complains({"Platform/Sound.h": '#include "Platform/Foundation/Data.h"\n'},
                              "stands in no room")

    def test_circles_are_found_through_the_sources_of_units(self):
        files = {"Imaging/A.h": "", "Imaging/A.cpp": '// A.\n#include "Imaging/B.h"\n',
                 "Imaging/B.h": '#include "Imaging/C.h"\n', "Imaging/C.h": '#include "Imaging/A.h"\n',
                 "Imaging/Imaging.h": '#include "Imaging/Image.h"\n#include "Imaging/A.h"\n#include "Imaging/B.h"\n'
                                      '#include "Imaging/C.h"\n',
                 "Tests/ATest.cpp": ""}
        self.assert_complains(files, "these 3 units include one another in a circle: Imaging/A, Imaging/B, Imaging/C")
        status, text = self.check("--circles", files=files)
        self.assertEqual(status, 0)
        self.assertIn("these 3 units", text)

    def test_two_circles_are_two(self):
        files = {f"Platform/Foundation/{name}.h": f'#include "Platform/Foundation/{other}.h"\n'
                 for name, other in ("AB", "BA", "CD", "DC")}
        self.assertEqual(self.check(files=files)[1].count("these 2 units"), 2)

    def test_a_public_header_that_the_umbrella_leaves_out_is_told(self):
        self.assert_complains({"Imaging/Mask.h": ""}, "Imaging/Imaging.h: does not include Imaging/Mask.h")

    def test_a_source_that_does_not_say_what_it_is_is_told(self):
        self.assert_complains({"Platform/Foundation/Data.cpp": '#include "Platform/Foundation/Data.h"\n'},
                              "Platform/Foundation/Data.cpp: begins without a sentence")

    def test_a_source_without_a_test_is_told(self):
        self.assert_complains({"Platform/Foundation/Url.cpp": "// Addresses.\n"}, "Url.cpp: no test has its name")

    def test_a_test_may_name_other_sources_that_it_tests(self):
        status, text = self.check(files={"Platform/Foundation/Url.cpp": "// Addresses.\n",
                                         "Tests/DataTest.cpp": "// Also tests: Platform/Foundation/Url.cpp\n"})
        self.assertEqual(status, 0, text)

    def test_a_test_that_names_a_source_that_is_gone_is_told(self):
        self.assert_complains({"Tests/DataTest.cpp": "// Also tests: Platform/Foundation/Gone.cpp\n"},
                              "Platform/Foundation/Gone.cpp: a test says that it tests this")


if __name__ == "__main__":
    unittest.main()
