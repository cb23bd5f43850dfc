// Exceptions carry a name and a reason; both stand in what().

#include "Platform/Foundation/Exception.h"

namespace Imaging::Platform {

NSException::NSException(std::string_view name, std::string_view reason) : m_name(name), m_reason(reason) {
    m_what = m_name + ": " + m_reason;
}

NSException::~NSException() = default;

} // namespace Imaging::Platform
