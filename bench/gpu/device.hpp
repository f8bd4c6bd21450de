// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_gpu/runtime.hpp"

#include <string>

namespace vela::bench {

/// Ends the program with a message if a CUDA call failed, since later measurements would be meaningless.
void require(cudaError_t status, const char* what);

/// Launches, on the null stream, a kernel that does nothing.
void launchNothing();

/// Keeps the null stream busy for this time, so that work queued meanwhile then runs without waiting for
/// the host.
void holdDevice(double microseconds);

/// One line about the device in use.
std::string describeDevice();

}  // namespace vela::bench
