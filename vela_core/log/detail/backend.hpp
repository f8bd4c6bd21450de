// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace vela::detail {

/// Whether the backend that the registry started was stopped by others: by quill's own handler of `exit`, or
/// by the program. It then writes what is queued, and never ends if threads go on logging.
bool backendWasStopped() noexcept;

}  // namespace vela::detail
