#pragma once

#include "Platform/Foundation/Export.h"

#include <exception>
#include <string>
#include <string_view>

namespace Imaging::Platform {

inline constexpr std::string_view NSGenericException = "NSGenericException";
inline constexpr std::string_view NSRangeException = "NSRangeException";
inline constexpr std::string_view NSInvalidArgumentException = "NSInvalidArgumentException";
inline constexpr std::string_view NSInternalInconsistencyException = "NSInternalInconsistencyException";
inline constexpr std::string_view NSInvalidArchiveOperationException = "NSInvalidArchiveOperationException";
inline constexpr std::string_view NSInvalidUnarchiveOperationException =
    "NSInvalidUnarchiveOperationException";
inline constexpr std::string_view NSImageCacheException = "NSImageCacheException";
inline constexpr std::string_view NSGraphicsException = "NSGraphicsException";
inline constexpr std::string_view NSResourceException = "NSResourceException";

/// What the library throws: a name to tell the kinds apart by, and a reason in words for people.
///
/// Example:
/// @code
/// std::string reason;
/// try {
///     throw NSException(NSRangeException, "pixel outside the bitmap");
/// } catch (const NSException& failure) {
///     reason = failure.reason();
/// }
/// @endcode
class IMAGING_EXPORT NSException : public std::exception {
public:
    NSException(std::string_view name, std::string_view reason);
    ~NSException() override;

    const std::string& name() const { return m_name; }
    const std::string& reason() const { return m_reason; }

    /// "name: reason"
    const char* what() const noexcept override { return m_what.c_str(); }

private:
    std::string m_name;
    std::string m_reason;
    std::string m_what;
};

} // namespace Imaging::Platform
