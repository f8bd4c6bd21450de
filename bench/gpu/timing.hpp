// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <vector>

namespace vela::bench {

double medianOf(std::vector<double> values);

/// Queues the nth operation on the null stream.
using Operation = std::function<void(unsigned n)>;

/// Mean device time in microseconds of `count` operations that are queued while the device is busy.
double deviceTime(unsigned count, const Operation& operation);

/// The same for operations that wait for the device, or that the device waits for: nothing is queued ahead.
double callTime(unsigned count, const Operation& operation);

/// How many operations a batch needs so that the events' resolution does not matter.
unsigned batchFor(const Operation& operation);

}  // namespace vela::bench
