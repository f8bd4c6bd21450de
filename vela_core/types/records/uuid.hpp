// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/String.hpp"

#include <random>
#include <string>

namespace vela VELA_API {

/// The source of unique identifiers. The engine is seeded once, from `rd`, and once more in each forked
/// child; it exists before a program's own globals. It has no lock: calls from several threads, those of
/// `CustomBoxObjectData()` among them, must be serialised by the caller.
namespace uuid {

extern std::random_device rd;
extern std::mt19937_64 gen;
extern std::uniform_int_distribution<> dis;   ///< a hexadecimal digit
extern std::uniform_int_distribution<> dis2;  ///< the variant digit, 8 to 11

/// A random identifier (RFC 4122, version 4), 36 characters in lower case. Each of its 31 random digits is
/// one draw from `gen`, in order, so that a copy of the engine replays it. An engine that is seeded with 32
/// bits tells identifiers apart; it keeps nothing secret.
std::string generate_uuid_v4();

}  // namespace uuid

/// A fresh identifier by `uuid::generate_uuid_v4`.
String generate_unique_id();

}  // namespace vela
