// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <vector>

namespace vela::bench {

double medianOf(std::vector<double> values);

/// Gives the nth operation to the null stream.
using Operation = std::function<void(unsigned n)>;

/// Microseconds that one of `count` operations, queued while the device is held busy, takes it on average.
double deviceTime(unsigned count, const Operation& operation);

/// The same for operations that wait for the device, or that the device waits for: nothing is queued ahead.
double callTime(unsigned count, const Operation& operation);

/// How many operations make a batch so long that the events' resolution does not matter.
unsigned batchFor(const Operation& operation);

}  // namespace vela::bench
