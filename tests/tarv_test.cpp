// The tool, run as a program.  Faults to catch: bytes that change on their way (line ends, NUL,
// what is not UTF-8, block borders of the reader); a line without its answer; an exit status or a
// stream that is not the promised one; arguments taken apart or expanded; examples that no longer
// hold.

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <deque>
#include <filesystem>
#include <fstream>
#include <future>
#include <istream>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "tarvcore/abs_rel_time.h"
#include "tarvcore/to_string.h"
#include "tests/support/child_process.h"
#include "tests/support/pattern.h"
//
#include <windows.h>

namespace {

using tarv_test::agrees;
using tarv_test::Outcome;
using tarv_test::run_program;

Outcome tarv(const std::vector<std::wstring>& arguments, const std::string& input = {}) {
    return run_program(L"tarv.exe", arguments, {input});
}

// A folder of its own for dumps.
class TarvDemo : public testing::Test {
protected:
    TarvDemo() { SetEnvironmentVariableW(L"ZOLT_TRACE_ROOT", folder_.c_str()); }
    ~TarvDemo() override {
        SetEnvironmentVariableW(L"ZOLT_TRACE_ROOT", nullptr);
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

    const std::filesystem::path folder_ = std::filesystem::temp_directory_path() / L"tarvcore_demo";
};

// What a terminal showed: a command after "$ ", what it wrote to standard output and, after "2> ",
// to standard error, and its exit status in brackets unless that is 0.  Output may be a pattern.
// Headings begin with "# ", and with the empty line above them.
struct Case {
    unsigned line;
    std::string command;
    std::string output;
    std::string errors;
    unsigned long status = 0;
};

std::vector<Case> read_cases(std::istream& file) {
    std::vector<Case> cases;
    bool in_case = false;
    unsigned number = 0;
    for (std::string line; std::getline(file, line);) {
        ++number;
        if (line.starts_with("$ ")) {
            cases.push_back({number, line.substr(2), {}, {}});
            in_case = true;
        } else if (line.starts_with("# ") || line.starts_with("```")) {
            if (in_case && line[0] == '#') cases.back().output.pop_back();
            in_case = false;
        } else if (in_case && line.starts_with("2>")) {
            cases.back().errors += (line.size() > 3 ? line.substr(3) : "") + '\n';
        } else if (in_case && line.starts_with("[") && line.size() == 3 && line[2] == ']') {
            cases.back().status = static_cast<unsigned long>(line[1] - '0');
        } else if (in_case) {
            cases.back().output += line + '\n';
        }
    }
    return cases;
}

// Words as a shell takes them, with '…', "…" and | alone.
std::vector<std::string> words_of(const std::string& command) {
    std::vector<std::string> words;
    bool in_word = false;
    char quote = '\0';
    for (const char c : command) {
        if (c == ' ' && quote == '\0') {
            in_word = false;
            continue;
        }
        if (!std::exchange(in_word, true)) words.emplace_back();
        if (quote != '\0' ? c == quote : c == '\'' || c == '"') {
            quote = quote != '\0' ? '\0' : c;
        } else {
            words.back() += c;
        }
    }
    return words;
}

// The escapes of printf: \n, \r, \t, \\ and \xHH.
std::string unescaped(const std::string& format) {
    std::string text;
    for (unsigned i = 0; i < format.size(); ++i) {
        if (format[i] != '\\') {
            text += format[i];
            continue;
        }
        const char kind = format.at(++i);
        if (kind == 'x') {
            text += static_cast<char>(std::stoi(format.substr(i + 1, 2), nullptr, 16));
            i += 2;
        } else {
            text += kind == 'n' ? '\n' : kind == 'r' ? '\r' : kind == 't' ? '\t' : kind;
        }
    }
    return text;
}

Outcome run_command(const std::string& command) {
    std::vector<std::string> words = words_of(command);
    std::string input;
    if (words.at(0) == "printf" && words.at(2) == "|") {
        input = unescaped(words.at(1));
        words.erase(words.begin(), words.begin() + 3);
    }
    if (words.at(0) != "tarv" && words.at(0) != "./tarv") throw std::runtime_error("what is this?");
    std::vector<std::wstring> arguments;
    for (unsigned i = 1; i < words.size(); ++i) {
        arguments.push_back(tarvcore::to_wstring(words[i], L'?', nullptr));
    }
    return tarv(arguments, input);
}

void run_cases(std::istream& file, const std::string& name, unsigned least) {
    const std::vector<Case> cases = read_cases(file);
    EXPECT_GE(cases.size(), least) << name;
    // A process's life is mostly waiting: a few at a time.
    std::deque<std::future<Outcome>> running;
    unsigned started = 0;
    for (const Case& c : cases) {
        for (; started < cases.size() && running.size() < 4; ++started) {
            running.push_back(std::async(std::launch::async, run_command, cases[started].command));
        }
        SCOPED_TRACE(name + ':' + std::to_string(c.line) + ": " + c.command);
        const Outcome outcome = running.front().get();
        running.pop_front();
        EXPECT_TRUE(agrees(outcome.output, c.output));
        EXPECT_TRUE(agrees(outcome.errors, c.errors));
        EXPECT_EQ(outcome.status, c.status);
    }
}

TEST(Tarv, AnswersAsTheCasesSay) {
    std::ifstream file(std::filesystem::path(TEST_DATA_FOLDER "/tarv_cases.txt"));
    run_cases(file, "tarv_cases.txt", 40);
}

TEST(Tarv, DoesWhatItsManualShows) {
    std::ifstream file(std::filesystem::path(TEST_DATA_FOLDER "/../../docs/tool.md"));
    run_cases(file, "docs/tool.md", 10);
}

// Every verb has some.
TEST_F(TarvDemo, DoesWhatItsHelpShows) {
    std::istringstream objects(tarv({L"help", L"--json"}).output);
    std::string examples;
    unsigned verbs = 0;
    for (std::string line; std::getline(objects, line); ++verbs) {
        const auto verb = nlohmann::json::parse(line);
        EXPECT_TRUE(verb["examples"].get<std::string>().starts_with("$ tarv ") ||
                    verb["examples"].get<std::string>().starts_with("$ printf "))
            << verb;
#if defined(TARVCORE_STATIC)
        if (verb["verb"] == "demo crash") continue;  // see below
#endif
        examples += verb["examples"];
    }
    std::istringstream session(examples);
    run_cases(session, "examples of the help", verbs - 1);
    EXPECT_GE(verbs, 30u);
}

std::string bytes_of(const std::wstring& text) {
    return std::string(reinterpret_cast<const char*>(text.data()), 2 * text.size());
}

TEST(Tarv, PassesEveryByteThroughLineMode) {
    // Templates without places and values come back as they are.  The lengths lead over the borders
    // of blocks at every phase, and some lines are longer than any block.
    std::mt19937 random(20140716);
    std::string input;
    for (int i = 0; i < 3000; ++i) {
        const unsigned length = i % 500 == 0 ? 700'000 : random() % 900;
        for (unsigned k = 0; k < length; ++k) {
            const char byte = static_cast<char>(random());
            input += byte == '\n' || byte == '\t' ? '{' : byte;
        }
        input += '\n';
    }
    const Outcome outcome = tarv({L"error", L"expand", L"-"}, input);
    EXPECT_TRUE(outcome.output == input);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.status, 0u);
}

TEST(Tarv, PassesEveryByteThroughEncodings) {
    // More than one piece, and ends in each phase of a group.
    std::mt19937 random(20140716);
    for (unsigned size = 200'000; size < 200'005; ++size) {
        std::string bytes(size, '\0');
        std::ranges::generate(bytes, [&] { return static_cast<char>(random()); });
        for (const std::wstring encoding : {L"base64", L"base32", L"hex"}) {
            const Outcome text = tarv({L"encode", encoding, L"--file", L"-"}, bytes);
            ASSERT_EQ(text.status, 0u);
            const Outcome back = tarv({L"decode", encoding, L"--file", L"-"}, text.output);
            ASSERT_EQ(back.status, 0u);
            ASSERT_TRUE(back.output == bytes) << size;
        }
    }
}

// Characters and faults of every length, and runs of what belongs together that are longer than a
// piece: the tool must come to what the library makes of the whole.
TEST(Tarv, ConvertsAFileAsAWhole) {
    std::mt19937 random(20140716);
    std::string utf8;
    std::wstring utf16;
    for (int i = 0; i < 60'000; ++i) {
        const std::string parts[] = {"aaa", "\xC3\xA9", "\xF0\x90", "\xFD\xBF\xBF\xBF\xBF\xBF",
                                     "\xFF"};
        const wchar_t units[] = {L'a', 0xD801, 0xDC00, 0xFEFF};
        const unsigned run = i == 30'000 ? 300'001 : random() % 3;
        utf8 += parts[random() % 5] + std::string(run, '\x80');
        utf16 += units[random() % 4] + std::wstring(run, 0xD800);
    }
    const std::wstring wide = tarvcore::to_wstring(utf8, L'?', nullptr);
    const std::string narrow = tarvcore::to_string(utf16, '?', nullptr);
    const auto converted = [](const wchar_t* from, const wchar_t* to, const std::string& bytes) {
        return tarv({L"text", L"convert", L"--from", from, L"--to", to, L"--replace", L"?",
                     L"--file", L"-"},
                    bytes)
            .output;
    };
    EXPECT_TRUE(converted(L"utf8", L"utf16le", utf8) == bytes_of(wide));
    EXPECT_TRUE(converted(L"utf16le", L"utf8", bytes_of(utf16)) == narrow);
    EXPECT_TRUE(converted(L"utf32le", L"utf8", converted(L"utf8", L"utf32le", utf8)) ==
                converted(L"utf8", L"utf8", utf8));

    // A run that ends almost where the piece does.
    const std::string run =
        "\xFD\xBF\xBF\xBF\xBF\xBF" + std::string(65'536 - 6 - 3, '\x80') + "abc";
    EXPECT_EQ(converted(L"utf8", L"utf32le", run),
              std::string("\xFF\xFF\xFF\x7F?\0\0\0a\0\0\0b\0\0\0c\0\0\0", 20));
}

// Wherever the border of two pieces is in a bad sequence, and at the end of the text.
TEST(Tarv, FindsTheSameFaultAtTheBorderOfPieces) {
    const struct {
        const char *end, *message;
    } rows[] = {
        {"\xFDxxxxxxxxxxx", "Invalid subsequent byte in UTF-8 character sequence"},
        {"\xFD\x84\x80", "String ends in a partial UTF-8 sequence"},
    };
    for (const auto& row : rows) {
        for (unsigned before = 65'536 - 9; before <= 65'536; ++before) {
            const Outcome outcome =
                tarv({L"text", L"check", L"--file", L"-"}, std::string(before, 'a') + row.end);
            EXPECT_NE(outcome.errors.find(row.message), std::string::npos)
                << before << outcome.errors;
            EXPECT_EQ(outcome.status, 1u);
        }
    }
}

TEST(Tarv, TellsTheTime) {
    using tarvcore::AbsoluteTime;
    const AbsoluteTime before = AbsoluteTime::now();
    const std::string text = tarv({L"time", L"now"}).output;
    ASSERT_TRUE(text.ends_with("Z\n"));
    const AbsoluteTime time = AbsoluteTime::from_string(text.substr(0, text.size() - 1));
    EXPECT_LE(before, time);
    EXPECT_LE(time, AbsoluteTime::now());
}

TEST_F(TarvDemo, ShowsACrashAndItsDump) {
#if defined(TARVCORE_STATIC)
    GTEST_SKIP() << "a dump has the address checker's memory, too: too much for a file in passing";
#endif
    const Outcome outcome = tarv({L"demo", L"crash"});
    EXPECT_EQ(outcome.status, 3u);
    EXPECT_TRUE(agrees(outcome.output, "Writing to address 0x10.…\n…"));
    const std::string& report = outcome.errors;
    const std::string announcement = "Created memory dump: ";
    ASSERT_TRUE(agrees(report,
                       "…\nErrorCode:   error.exception.fault.accessViolation\n…\n"
                       "    …: writing address 0x00000010 by thread 0x…\n…\n*** … - " +
                           announcement + "…\n\n*** … - !!!!! Aborting process NOW !!!!!\n"));
    const auto begin = report.find(announcement) + announcement.size();
    const std::filesystem::path path(report.substr(begin, report.find('\n', begin) - begin));
    EXPECT_TRUE(agrees(path.string(), folder_.string() + "\\2…\\tarv_2….dmp"));
    char signature[5] = {};
    std::ifstream(path, std::ios::binary).read(signature, 4);
    EXPECT_STREQ(signature, "MDMP") << path;
}

TEST(Tarv, ReportsAnInputThatCannotBeRead) {
    const std::vector<std::wstring> commands[] = {{L"error", L"expand", L"-"},
                                                  {L"encode", L"hex", L"--file", L"-"}};
    for (const auto& command : commands) {
        const Outcome outcome = run_program(L"tarv.exe", command, {.has_input = false});
        EXPECT_TRUE(outcome.errors.starts_with("tarv: Cannot read standard input: "))
            << outcome.errors;
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.status, 1u);
    }
}

TEST(Tarv, ReportsAnOutputThatNobodyReads) {
    const Outcome outcome =
        run_program(L"tarv.exe", {L"error", L"expand", L"x"}, {.reads_output = false});
    EXPECT_TRUE(outcome.errors.starts_with("tarv: Cannot write the output: ")) << outcome.errors;
    EXPECT_EQ(outcome.status, 1u);
}

TEST(Tarv, RefusesAnArgumentThatIsNotUnicode) {
    const Outcome outcome = tarv({L"error", L"expand", {L'a', 0xD800, L'b'}});
    EXPECT_EQ(outcome.errors, "tarv: argument 3 is not valid Unicode text\n");
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.status, 2u);
}

}  // namespace
