// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "vela_io/detail/records.hpp"

#include <string>
#include <vector>

namespace vela::io::detail {

/// Numbers of a VTK file that belong to the points.
struct VtkSection {
    std::size_t position = 0;  ///< of the first number
    SCALAR type = SCALAR::FLOAT32;
    std::size_t components = 0;  ///< for each point; 0 is no section
};

/// What a VTK file holds of its points, and where.
struct VtkSurvey {
    CloudHeader header;
    VtkSection points;
    VtkSection colors;
    VtkSection normals;
    std::vector<std::string> notes;  ///< on what is left out
};

/// Finds the sections of a file without reading their numbers; counts are checked against the file.
VtkSurvey surveyVtk(InputFile& file);

}  // namespace vela::io::detail
