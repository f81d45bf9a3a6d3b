// How the tour is told.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "tools/tarv/output.h"

namespace tarv {

// Writes a road's story: numbered steps, each of prose, of code that is run and of what came of it.
class Story {
public:
    explicit Story(Output& output) : output_(output) {}

    void title(std::string_view text) {
        output_.write('\n' + std::string(text) + '\n' + std::string(text.size(), '-') + '\n');
        step_ = 0;
    }
    void step(std::string_view text) {
        output_.write('\n' + std::to_string(++step_) + ". ");
        prose(text, false);
    }
    void prose(std::string_view text, bool apart = true) {
        if (apart) output_.write("\n   ");
        for (const char c : text) {
            output_.write(std::string_view(&c, 1));
            if (c == '\n') output_.write("   ");
        }
        output_.write("\n");
    }
    void lines(std::string_view text) {
        output_.write("\n");
        while (!text.empty()) {
            const std::string_view line = text.substr(0, text.find('\n'));
            output_.write("       " + std::string(line) + '\n');
            text.remove_prefix(std::min(line.size() + 1, text.size()));
        }
    }

private:
    Output& output_;
    unsigned step_ = 0;
};

// An operation that completes on another thread, one that is cancelled, one that is forgotten.
void async_road(Story& story);

}  // namespace tarv
