#pragma once

namespace lux::detail {

inline constexpr char hexDigits[] = "0123456789ABCDEF";

} // namespace lux::detail
