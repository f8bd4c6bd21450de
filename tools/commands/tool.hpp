// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iosfwd>

/// The commands of velatool, for programs that offer them in another form.
namespace vela::tools {

/// Runs one command line; `argv[0]` is the program's name in messages. Results go to `out`, errors, one line
/// each, to `err`; the file name "-" is the process's standard input or output. Returns the exit code: 0 done
/// (`diff`: same), 1 `diff`: different, 2 error. Throws nothing.
int runTool(int argc, const char* const* argv, std::ostream& out, std::ostream& err);

}  // namespace vela::tools
