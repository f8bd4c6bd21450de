// SPDX-License-Identifier: Apache-2.0
#include "vela_core/types/parameter_files.hpp"

#include "vela_core/types/detail/start_order.hpp"

namespace vela {
using namespace detail;

[[gnu::init_priority(START_PARAMETER_FILES)]] const std::string INIT_PARAM_EXTENSION = ".yml";

}  // namespace vela
