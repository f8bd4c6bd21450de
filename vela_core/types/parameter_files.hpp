// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace vela {

/// File extension of parameter files, ".yml". Built before a program's own globals and destroyed after them.
extern const std::string INIT_PARAM_EXTENSION;

}  // namespace vela
