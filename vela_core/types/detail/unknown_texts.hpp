#pragma once

namespace vela {

// The answers to values without a name. Constants, so that they can be read at any time, static
// initialisation and exit included.
inline constexpr const char* UNKNOWN_NAME = "Unknown";
inline constexpr const char* UNKNOWN_MESSAGE = "Unknown error";

}  // namespace vela
