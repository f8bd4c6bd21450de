// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_gpu/runtime.hpp"

#include <string>

namespace vela::bench {

/// Ends the program with a line when a CUDA call failed: what comes after it would be no measurement.
void require(cudaError_t status, const char* what);

/// Launches, on the null stream, a kernel that does nothing.
void launchNothing();

/// Keeps the null stream busy for so long, so that what is queued meanwhile runs without waiting for the
/// host.
void holdDevice(double microseconds);

/// One line about the device in use.
std::string describeDevice();

}  // namespace vela::bench
