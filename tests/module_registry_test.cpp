// Faults to catch: a name with two modules; texts that are the caller's still; an answer for a name
// that is not there; threads that see half of a change.

#include "tarvmoduleregistry/module_registry.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>

#include "tests/support/threads.h"

namespace {

using namespace tarvmoduleregistry;

std::string text_of(const char* name) {
    ModuleInfo info{"untouched"};
    const bool known = query_module_info(name, &info);
    return (known ? "known: " : "unknown: ") + info.text;
}

TEST(ModuleRegistry, KeepsOneTextAName) {
    std::string name = "first";
    std::string text = "text";
    EXPECT_TRUE(add_module_info(name.c_str(), text.c_str()));
    name[0] = text[0] = '?';
    EXPECT_FALSE(add_module_info("first", "other"));
    EXPECT_TRUE(add_module_info("firs", ""));
    EXPECT_TRUE(add_module_info("First", "third"));
    EXPECT_EQ(text_of("first"), "known: text");

    remove_module_info("firs");
    remove_module_info("firs");
    EXPECT_EQ(text_of("firs"), "unknown: untouched");
    EXPECT_EQ(text_of("First"), "known: third");
    remove_module_info("First");
    EXPECT_EQ(text_of("first"), "known: text");
    remove_module_info("first");
    EXPECT_TRUE(add_module_info("first", "again"));
    EXPECT_EQ(text_of("first"), "known: again");
    remove_module_info("first");
}

TEST(ModuleRegistry, GivesANameToOneOfManyThreads) {
    const std::string long_text(1000, 'x');
    std::atomic<int> owners = 0;
    std::atomic<int> faults = 0;
    tarv_test::run_threads(4, [&](unsigned i) {
        const std::string own = "own" + std::to_string(i);
        for (int round = 0; round < 5000; ++round) {
            if (!add_module_info(own.c_str(), own.c_str())) ++faults;
            if (add_module_info("shared", long_text.c_str())) {
                if (++owners != 1) ++faults;
                --owners;
                remove_module_info("shared");
            }
            ModuleInfo info{long_text};
            query_module_info("shared", &info);
            if (info.text != long_text || text_of(own.c_str()) != "known: " + own) ++faults;
            remove_module_info(own.c_str());
        }
    });
    EXPECT_EQ(faults, 0);
    EXPECT_EQ(text_of("shared"), "unknown: untouched");
}

}  // namespace
