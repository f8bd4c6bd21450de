#pragma once

#include "vela_core/types/BodyParts.hpp"
#include "vela_core/types/String.hpp"

#include <random>
#include <string>
#include <utility>
#include <vector>

namespace vela {

// Values that the whole process shares, built while the library is loaded and destroyed at exit.

/// The bones of a `POSE_18` skeleton, in the order that drawing code relies on.
extern const std::vector<std::pair<BODY_PARTS, BODY_PARTS>> BODY_BONES;

/// The bones of a `POSE_34` skeleton, in the order that drawing code relies on.
extern const std::vector<std::pair<BODY_PARTS_POSE_34, BODY_PARTS_POSE_34>> BODY_BONES_POSE_34;

/// File extension of parameter files.
extern const std::string INIT_PARAM_EXTENSION;

/// The source of unique identifiers. The engine is seeded once and has no lock: calls from several threads,
/// those of `CustomBoxObjectData()` among them, must be serialised by the caller.
namespace uuid {

extern std::random_device rd;
extern std::mt19937_64 gen;
extern std::uniform_int_distribution<> dis;   ///< a hexadecimal digit
extern std::uniform_int_distribution<> dis2;  ///< the variant digit, 8 to 11

/// A random identifier (RFC 4122, version 4), 36 characters in lower case. Each of its 31 random digits is
/// one draw from `gen`, in order, so that a copy of the engine replays it.
std::string generate_uuid_v4();

}  // namespace uuid

/// A fresh identifier by `uuid::generate_uuid_v4`.
String generate_unique_id();

}  // namespace vela
