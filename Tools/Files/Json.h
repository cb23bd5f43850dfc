#pragma once

#include <concepts>
#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace Imaging::Tool {

/// A value of JSON (RFC 8259) that is put together to be written. The members of an object keep their order.
///
/// It is here so that few sources have to know the library that writes it, which takes long to compile.
class Json {
public:
    using Member = std::pair<std::string, Json>;

    Json() = default; ///< null
    Json(bool value) : m_value(value) {}
    Json(double value) : m_value(value) {}
    Json(std::string value) : m_value(std::move(value)) {}
    Json(const char* value) : m_value(std::string(value)) {}

    /// A whole number.
    template<std::integral Number>
    Json(Number value) : m_value(Whole<Number>(value)) {}

    static Json object(std::vector<Member> members) { return Json(Value(std::move(members))); }
    static Json list(std::vector<Json> values) { return Json(Value(std::move(values))); }

    /// One more member of an object, whose names are told apart by whoever adds them.
    void add(std::string name, Json value);

    /// On one line. Bytes that are not UTF-8 become U+FFFD.
    std::string text() const;

    /// The same with a line for each value, indented by two spaces a level.
    std::string indentedText() const;

private:
    template<std::integral Number>
    using Whole = std::conditional_t<std::signed_integral<Number>, std::int64_t, std::uint64_t>;
    using Value = std::variant<std::monostate, bool, std::int64_t, std::uint64_t, double, std::string,
                               std::vector<Json>, std::vector<Member>>;

    explicit Json(Value value) : m_value(std::move(value)) {}

    friend class JsonWriter;

    Value m_value;
};

} // namespace Imaging::Tool
