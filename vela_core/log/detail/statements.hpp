// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"

#include <cstddef>

namespace vela::detail {

/// The library's log statements, one for each place that logs. The source file has their formats and
/// positions.
enum class LogStatement : std::size_t {
    PARAMETER_NOT_FOUND,    ///< detail: the parameter's name
    WRAP_UNSUPPORTED_TYPE,  ///< no detail
    GPU_FREE_FAILED,        ///< detail: the Mat's name
    UPDATE_CPU_OF_REFERENCE,
    UPDATE_GPU_OF_REFERENCE,
    READ_EXCEPTION,  ///< detail: the exception's message
    WRITE_DEPTH_FAILED,
    WRITE_CLOUD3_FAILED,
    WRITE_CLOUD4_FAILED,
    WRITE_UNSUPPORTED_TYPE,
    WRITE_EXCEPTION,  ///< detail: the exception's message
    SET_SUB_MATRIX3F,
    SET_SUB_VECTOR3F,
    SET_SUB_VECTOR4F,
};

/// Passes the statement's text to the `LogHook` or, without one, the statement and its arguments to the core
/// logger, unless that logger's level is above error or the message is late (see `KLogger`). Without a hook,
/// formatting is left to quill's backend. Throws nothing.
VELA_API void logError(LogStatement statement) noexcept;
VELA_API void logError(LogStatement statement, const char* detail) noexcept;

}  // namespace vela::detail
