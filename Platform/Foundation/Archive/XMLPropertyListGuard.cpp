// Follows the tags of a property list in XML in one pass over its bytes, and counts depth, keys and what
// character references will cost.

#include "Platform/Foundation/Archive/XMLPropertyListGuard.h"

#include "Platform/Foundation/Archive/KeyedArchiveFormat.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace Imaging::Platform {

namespace {

constexpr std::string_view spaces = " \t\r\n";
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

[[noreturn]] void damaged(const char* what) {
    throwDamagedArchive(std::string("the XML property list is damaged: ") + what);
}

std::string_view textOf(ByteView data) { return {reinterpret_cast<const char*>(data.data()), data.size()}; }

/// Elements with text in them and no other elements.
bool isLeaf(std::string_view name) {
    static constexpr std::array<std::string_view, 6> leaves = {"key",  "string",  "data",
                                                               "date", "integer", "real"};
    return std::find(leaves.begin(), leaves.end(), name) != leaves.end();
}

/// Follows the tags and counts how deep they nest. Where the parser and the rules of XML could differ on
/// where a tag, a comment or a declaration ends, the walk refuses: otherwise elements could be hidden from
/// it that the parser sees.
class XMLWalk {
public:
    explicit XMLWalk(std::string_view text) : m_text(text) {}

    void run() {
        while ((m_position = m_text.find('<', m_position)) != std::string_view::npos) readMarkup();
        if (!m_keys.empty()) damaged("it is cut short");
    }

private:
    bool at(std::string_view start) const { return m_text.substr(m_position).starts_with(start); }

    void readMarkup() {
        if (at("<!--")) return readComment();
        if (at("<![CDATA[")) return readVerbatimText();
        if (at("<?")) return readInstruction();
        if (at("<!")) return readDeclaration();
        if (at("</")) return readEndTag();
        readStartTag();
    }

    void skipTo(std::string_view end) {
        m_position = m_text.find(end, m_position);
        if (m_position == std::string_view::npos) damaged("it is cut short");
        m_position += end.size();
    }

    void readComment() {
        m_position += 4;
        if (at(">") || at("->")) damaged("a comment is malformed");
        skipTo("-->");
    }

    void readVerbatimText() {
        if (!m_in_leaf) damaged("there is text where an element should be");
        skipTo("]]>");
    }

    void readInstruction() {
        if (m_in_leaf) damaged("a text holds a tag");
        m_position += 2;
        skipTo("?>");
    }

    void readDeclaration() {
        if (!at("<!DOCTYPE") || !m_keys.empty()) damaged("it holds an unknown declaration");
        const std::string_view declaration = readToTagEnd();
        if (declaration.find('[') != std::string_view::npos) refuseDeclarations();
    }

    [[noreturn]] static void refuseDeclarations() {
        throwDamagedArchive("the XML property list declares entities or elements of its own; property lists "
                            "have none");
    }

    /// The inside of a tag up to its ">". No tag of a property list has "<" or ">" in a quoted value.
    std::string_view readToTagEnd() {
        const std::size_t start = ++m_position;
        char quote = 0;
        for (; m_position < m_text.size(); ++m_position) {
            const char c = m_text[m_position];
            if (c == '[' && quote == 0) refuseDeclarations();
            if (c == '<' || (c == '>' && quote != 0)) damaged("a tag is malformed");
            if (c == '>') return m_text.substr(start, m_position++ - start);
            if (quote != 0) {
                if (c == quote) quote = 0;
            } else if (c == '"' || c == '\'') {
                quote = c;
            }
        }
        damaged("it is cut short");
    }

    void readEndTag() {
        const std::size_t start = m_position;
        readToTagEnd();
        if (m_keys.empty()) damaged("an element ends that never began");
        m_keys.pop_back();
        if (m_in_leaf) countMoves(m_text.substr(m_leaf_start, start - m_leaf_start));
        m_in_leaf = false;
    }

    /// For each character reference the parser moves what follows it in the same text.
    void countMoves(std::string_view text) {
        const auto references = static_cast<std::uint64_t>(std::count(text.begin(), text.end(), '&'));
        if (references == 0) return;
        if (text.size() > (maximumPropertyListMoves(m_text.size()) - m_moves) / references) {
            throwDamagedArchive("the XML property list has too many character references in one text");
        }
        m_moves += references * text.size();
    }

    void readStartTag() {
        if (m_in_leaf) damaged("a text holds a tag");
        const std::string_view tag = readToTagEnd();
        const std::string_view name = tag.substr(0, tag.find_first_of(" \t\r\n/"));
        if (name == "key") countKey();
        if (tag.ends_with('/')) return;
        if (m_keys.size() == maximumPropertyListDepth) {
            throwDamagedArchive("the property list nests too deeply");
        }
        m_keys.push_back(0);
        m_in_leaf = isLeaf(name);
        m_leaf_start = m_position;
    }

    void countKey() {
        if (m_keys.empty()) damaged("a key stands outside of a dictionary");
        if (++m_keys.back() > maximumPropertyListKeys) throwDamagedArchive("a dictionary has too many keys");
    }

    std::string_view m_text;
    std::size_t m_position = 0;
    std::size_t m_leaf_start = 0;
    bool m_in_leaf = false;
    std::uint64_t m_moves = 0;
    std::vector<std::uint32_t> m_keys; ///< for each element that is open: the keys in it
};

/// Takes a comment or processing instruction away when the text begins with one; false when it does not or
/// when the end is missing.
bool skipMisc(std::string_view& text) {
    const std::string_view end = text.starts_with("<!--") ? "-->" : text.starts_with("<?") ? "?>" : "";
    if (end.empty()) return false;
    const std::size_t found = text.find(end);
    if (found == std::string_view::npos) return false;
    text.remove_prefix(found + end.size());
    return true;
}

void skipSpaces(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(spaces), text.size()));
}

bool takeWord(std::string_view& text, std::string_view word) {
    if (!text.starts_with(word)) return false;
    text.remove_prefix(word.size());
    return true;
}

} // namespace

bool looksLikeXMLPropertyList(ByteView data) {
    std::string_view text = textOf(data);
    takeWord(text, byteOrderMark);
    do {
        skipSpaces(text);
    } while (skipMisc(text));
    const bool isDocumentType = takeWord(text, "<!DOCTYPE");
    if (isDocumentType) skipSpaces(text);
    if (!takeWord(text, isDocumentType ? "plist" : "<plist")) return false;
    return text.empty() || text.find_first_of(" \t\r\n>[/") == 0;
}

void checkXMLPropertyList(ByteView data) { XMLWalk(textOf(data)).run(); }

} // namespace Imaging::Platform
