// A guided tour: what programs do with the library, done before the reader's eyes.
#include <string>
#include <string_view>

#include "tarvcore/abs_rel_time.h"
#include "tarvcore/config.h"
#include "tarvcore/error_exception.h"
#include "tarvcore/string_key.h"
#include "tarvcore/uuid.h"
#include "tarvmoduleregistry/module_registry.h"
#include "tools/tarv/families.h"
#include "tools/tarv/story.h"

TARVCORE_SOURCE_FILE("$Id: //tools/tarv/tour_verbs.cpp#1 $");

namespace tarv {
namespace {

using tarvcore::AbsoluteTime;
using tarvcore::ErrorException;
using tarvcore::StringKey;
using tarvcore::Uuid;

std::string call_of(const char* text) {
    return "AbsoluteTime::from_string(\"" + std::string(text) + "\")";
}

std::string truth(bool value) {
    return value ? "true" : "false";
}

std::string test_of(const ErrorException& e, const char* family) {
    return "e.matches(\"" + std::string(family) + "\") is " + truth(e.matches(family));
}

// A time text that cannot be read: raised, caught, recognised, logged.
void error_road(Story& story) {
    const char* good = "2014-07-16T13:23:00Z";
    const char* bad = "2014-07-16X13:23:00Z";

    story.title("First road: an error, from the place that raises it to the log");

    story.step("A program reads a time:");
    story.lines(call_of(good));
    const AbsoluteTime time = AbsoluteTime::from_string(good);
    story.prose("The answer is a point in time: " + std::to_string(time.as_nsec()) +
                " nanoseconds after\n1970-01-01 00:00:00 UTC. Printed, it is " + time.as_string() +
                ".");

    story.step("The next text has an \"X\" between date and time:");
    story.lines(call_of(bad));
    try {
        static_cast<void>(AbsoluteTime::from_string(bad));
    } catch (const ErrorException& e) {
        const auto& error = *e.error();
        story.prose(
            "No time can be made of it, and so the call throws. All failures in this library\n"
            "are thrown as one type, tarvcore::ErrorException.");

        story.step(
            "The program catches it. The exception holds a record of what happened, and the\n"
            "record has a code, from the general to the particular:");
        story.lines(error.code().as_string());

        story.step(
            "What to do about it depends on the kind of error. Codes that begin alike, up to a\n"
            "dot, are a family, and the program asks for the family that it can handle:");
        story.lines(test_of(e, "error.tarvcore.absoluteTime") + '\n' +
                    test_of(e, "error.tarvcore") + '\n' + test_of(e, "error.tarvcore.uuid") + '\n' +
                    test_of(e, "error.tarvcore.abs"));
        story.prose("The last one is half a word, which is no family.");

        story.step(
            "The message was not put together until now. The record holds a template and the\n"
            "values that belong into it, and so raising an error costs no formatting:");
        std::string parts = error.message().as_string();
        for (const auto& [name, value] : error.params()) {
            parts += '\n' + name.as_string() + " = " + value;
        }
        story.lines(parts);

        story.step(
            "The log gets e.what(), which tells everything, the place in the source included:");
        story.lines(e.what() + 1);
    }
}

// Names for things: identifiers, and texts that are compared by address.
void identifier_road(Story& story) {
    story.title("And names for things");

    const Uuid first = Uuid::create_sequential();
    const Uuid second = Uuid::create_sequential();
    story.step("Identifiers need no one to hand them out. These were made one after the other:");
    story.lines(first.as_string() + '\n' + second.as_string());
    story.prose("They sort by the time at which they were made: first < second is " +
                truth(first < second) + ".");

    const StringKey key("sales");
    const StringKey other(std::string("sales").c_str());
    story.step(
        "A text that much refers to is there once. Its keys are compared by the address, however\n"
        "long it is:");
    story.lines("StringKey(\"sales\") == StringKey(\"sales\") is " + truth(key == other) +
                "\nkey.text() == other.text() is " + truth(key.text() == other.text()));
}

// What a process knows of the library that it has loaded.
void module_road(Story& story) {
    story.title("And the library itself");

    story.prose(
        "Each module says what it is while a process loads it, and warns of a second copy.\n"
        "Who looks into the process later may ask:");
    story.lines("tarvmoduleregistry::query_module_info(\"tarvcore\", &info)");
    tarvmoduleregistry::ModuleInfo info;
    tarvmoduleregistry::query_module_info("tarvcore", &info);
    story.prose("The answer is XML, which tools find in the DLL's file, too:");
    story.lines(info.text);
}

class TourVerb : public Verb {
public:
    TourVerb()
        : Verb({"", "", "The library at work, told step by step", "",
                "$ tarv tour\n"
                "This is tarvcore at work: every value below has just been computed by it.\n"
                "\u2026\n"}) {}

    bool has_json() const override { return false; }
    bool run(const Request&, Output& output, Output&) override {
        static constexpr void (*roads[])(Story&) = {error_road, async_road, identifier_road,
                                                    module_road};

        output.write("This is tarvcore at work: every value below has just been computed by it.\n");
        Story story(output);
        for (const auto road : roads) {
            road(story);
        }
        output.write(
            "\nNow try your own:\n"
            "    tarv time parse \"2014-07-16 13:23:00.25\"\n"
            "    tarv time parse yesterday\n"
            "    tarv --help\n");
        return true;
    }
};

}  // namespace

Verbs tour_verbs() {
    Verbs verbs;
    verbs.push_back(std::make_unique<TourVerb>());
    return verbs;
}

}  // namespace tarv
