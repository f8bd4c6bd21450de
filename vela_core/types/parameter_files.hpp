// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"

#include <string>

namespace vela VELA_API {

/// File extension of parameter files, ".yml". Built before a program's own globals and destroyed after them.
extern const std::string INIT_PARAM_EXTENSION;

}  // namespace vela
