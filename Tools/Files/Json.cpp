// Writes values with the library that knows how numbers and strings are spelled.

#include "Tools/Files/Json.h"

#include <nlohmann/json.hpp>

namespace Imaging::Tool {

/// Makes the library's value of ours, whatever type it has.
class JsonWriter {
public:
    using Written = nlohmann::ordered_json;

    static std::string dumped(const Json& json, int indent) {
        return std::visit(JsonWriter(), json.m_value)
            .dump(indent, ' ', false, Written::error_handler_t::replace);
    }

    Written operator()(std::monostate) const { return nullptr; }
    Written operator()(const std::vector<Json>& values) const {
        Written list = Written::array();
        for (const Json& value : values) list.push_back(std::visit(*this, value.m_value));
        return list;
    }
    Written operator()(const std::vector<Json::Member>& members) const {
        Written object = Written::object();
        for (const auto& [name, value] : members) object[name] = std::visit(*this, value.m_value);
        return object;
    }
    template<class Plain>
    Written operator()(const Plain& value) const {
        return value;
    }
};

void Json::add(std::string name, Json value) {
    std::get<std::vector<Member>>(m_value).emplace_back(std::move(name), std::move(value));
}

std::string Json::text() const { return JsonWriter::dumped(*this, -1); }

std::string Json::indentedText() const { return JsonWriter::dumped(*this, 2); }

} // namespace Imaging::Tool
