#pragma once

#include <cstdint>

namespace Imaging {

/// An argument that is a value of an enumeration or the number that stands for it, as documents and older
/// programs have it. A number that the enumeration does not name is kept as it is: the function that takes
/// the argument says what it does with such a one.
template<class Enum>
class EnumOrNumber {
public:
    // Implicit, since callers pass the one or the other.
    constexpr EnumOrNumber(Enum value) : m_value(value) {}                              // NOLINT
    constexpr EnumOrNumber(std::int32_t number) : m_value(static_cast<Enum>(number)) {} // NOLINT
    constexpr operator Enum() const { return m_value; }                                 // NOLINT

private:
    Enum m_value;
};

} // namespace Imaging
