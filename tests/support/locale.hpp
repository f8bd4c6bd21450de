// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "support/ScratchFolder.hpp"

#include <gtest/gtest.h>
#include <locale.h>
#include <stdlib.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

namespace vela::test {

/// While this lives, the process formats numbers with a decimal comma. The locale is compiled from its own
/// source, so it need not be installed.
class CommaLocale {
public:
    CommaLocale() {
        std::ofstream(folder_ / "comma.src") << "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \".\"\n"
                                                "grouping 3;3\nEND LC_NUMERIC\n";
        const std::string command =
            "localedef --force -i " + (folder_ / "comma.src") + " " + (folder_ / "comma") + " 2>/dev/null";
        static_cast<void>(std::system(command.c_str()));  // it warns about the missing categories
        setenv("LOCPATH", (folder_ / "").c_str(), 1);
        EXPECT_NE(setlocale(LC_NUMERIC, "comma"), nullptr);
        char text[8];
        std::snprintf(text, sizeof text, "%.1f", 0.5);
        EXPECT_STREQ(text, "0,5");
    }
    ~CommaLocale() {
        setlocale(LC_NUMERIC, "C");
        unsetenv("LOCPATH");
    }
    CommaLocale(CommaLocale&&) = delete;

private:
    ScratchFolder folder_;
};

}  // namespace vela::test
