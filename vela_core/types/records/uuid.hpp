// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/String.hpp"

#include <random>
#include <string>

namespace vela VELA_API {

/// Source of unique identifiers. The engine is seeded once from `rd`, and once more in each forked child; it
/// is built before a program's own globals. It has no lock: callers on several threads must serialise their
/// calls, constructions of `CustomBoxObjectData` included.
namespace uuid {

extern std::random_device rd;                 ///< source of the seeds, opened as "default"
extern std::mt19937_64 gen;                   ///< engine that every digit is drawn from
extern std::uniform_int_distribution<> dis;   ///< a hexadecimal digit, 0 to 15
extern std::uniform_int_distribution<> dis2;  ///< the variant digit, 8 to 11

/// A random identifier (RFC 4122, version 4), 36 characters in lower case. Each of its 31 random digits is
/// one draw from `gen`, in order, so that a copy of the engine replays it. An engine seeded with 32 bits
/// makes identifiers unlikely to collide, not hard to guess.
std::string generate_uuid_v4();

}  // namespace uuid

/// A fresh identifier by `uuid::generate_uuid_v4`.
String generate_unique_id();

}  // namespace vela
