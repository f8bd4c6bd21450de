// SPDX-License-Identifier: Apache-2.0
// Loads two plugins, each with its own copy of the library: both log, and each may destroy objects that the
// other has made. Arguments: the plugins. Exits with 0 when all is well.
#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

namespace vela {
class String;
}

namespace {

struct Plugin {
    void* library;

    template <class Function>
    Function* find(const char* name) const {
        return reinterpret_cast<Function*>(dlsym(library, name));
    }
};

int fail(const std::string& what) {
    std::printf("%s\n", what.c_str());
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return fail("two plugins, please");
    const Plugin plugins[] = {{dlopen(argv[1], RTLD_NOW | RTLD_LOCAL)},
                              {dlopen(argv[2], RTLD_NOW | RTLD_LOCAL)}};
    for (const Plugin& plugin : plugins) {
        if (plugin.library == nullptr) return fail(dlerror());
    }
    if (plugins[0].find<void>("plugin_log") == plugins[1].find<void>("plugin_log"))
        return fail("one copy only");

    char messages[] = "/tmp/vela_two_copies_XXXXXX";
    const int file = mkstemp(messages);
    if (file < 0 || dup2(file, STDERR_FILENO) < 0) return fail("no file for the messages");
    plugins[0].find<void(const char*)>("plugin_log")("first");
    plugins[1].find<void(const char*)>("plugin_log")("second");
    std::ifstream stream(messages);
    const std::string text(std::istreambuf_iterator<char>(stream), {});
    unlink(messages);
    for (const char* const wanted : {"in read : first\n", "in read : second\n"}) {
        if (text.find(wanted) == std::string::npos)
            return fail("lacks '" + std::string(wanted) + "': " + text);
    }

    vela::String* const made = plugins[0].find<vela::String*()>("plugin_make_text")();
    plugins[1].find<void(vela::String*)>("plugin_destroy_text")(made);
    return 0;
}
