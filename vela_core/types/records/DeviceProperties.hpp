// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_core/export.hpp"
#include "vela_core/types/String.hpp"
#include "vela_core/types/enum_stream.hpp"

#include <cstdint>

namespace vela VELA_API {

/// Camera model.
enum class MODEL : std::int32_t {
    KITE = 0,     ///< "KITE"
    KITE_S = 1,   ///< "KITE-S"
    KITE_3 = 2,   ///< "KITE 3"
    KITE_3E = 3,  ///< "KITE 3e"
};

/// Whether a camera can be opened.
enum class CAMERA_STATE : std::int32_t {
    AVAILABLE = 0,      ///< free to be opened
    NOT_AVAILABLE = 1,  ///< in use, or not ready
};

/// A camera found on this machine.
struct DeviceProperties {
    CAMERA_STATE state = CAMERA_STATE::NOT_AVAILABLE;  ///< whether it can be opened
    int id = -1;                                       ///< index on this machine, from 0; -1 means none
    String path;                                       ///< system device; empty at first
    MODEL model = MODEL::KITE;                         ///< camera model
    std::uint32_t serial = 0;                          ///< serial number; 0 means unknown
};

/// The display name; "Unknown" for a value without enumerator.
String toString(const MODEL& value);
/// The display name; "Unknown" for a value without enumerator.
String toString(const CAMERA_STATE& value);

/// The same text as `toString`.
String model2str(MODEL model);

/// "MODEL (ID) PATH SNSERIAL STATE"; without path and serial number two blanks precede the state.
String toString(const DeviceProperties& properties);

}  // namespace vela
