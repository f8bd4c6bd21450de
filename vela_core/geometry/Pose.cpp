// SPDX-License-Identifier: Apache-2.0
#include "vela_core/geometry/Pose.hpp"

#include <algorithm>
#include <iterator>
#include <ostream>

namespace vela {

Pose::Pose(const Pose& other)
    : transform(other.transform),
      timestamp(other.timestamp),
      confidence(other.confidence),
      valid(other.valid) {}

Pose& Pose::operator=(const Pose& other) {
    if (this == &other) return *this;
    transform = other.transform;
    timestamp = other.timestamp;
    confidence = other.confidence;
    std::fill(std::begin(pose_covariance), std::end(pose_covariance), 0.0F);
    std::fill(std::begin(twist), std::end(twist), 0.0F);
    valid = other.valid;
    return *this;
}

Pose::Pose(const Transform& transform_, unsigned long long timestamp_, int confidence_)
    : transform(transform_), timestamp(timestamp_), confidence(confidence_) {}

Pose::~Pose() {
    transform.setIdentity();
    valid = false;
}

std::ostream& operator<<(std::ostream& stream, const Pose& pose) {
    return stream << pose.transform << " at " << pose.timestamp << " ns, confidence " << pose.confidence
                  << (pose.valid ? ", valid" : ", not valid");
}

}  // namespace vela
