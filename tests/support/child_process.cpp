#include "tests/support/child_process.h"

#include <memory>
#include <mutex>
#include <stdexcept>
#include <thread>

#include <windows.h>

namespace tarv_test {
namespace {

struct CloseHandleOf {
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using Handle = std::unique_ptr<void, CloseHandleOf>;

// The child inherits the end that it uses; the other one stays here.
struct Pipe {
    enum class ChildEnd { read, write };

    explicit Pipe(ChildEnd child_end) {
        HANDLE read_end = nullptr;
        HANDLE write_end = nullptr;
        if (!CreatePipe(&read_end, &write_end, nullptr, 0)) throw std::runtime_error("CreatePipe");
        child.reset(child_end == ChildEnd::read ? read_end : write_end);
        ours.reset(child_end == ChildEnd::read ? write_end : read_end);
        SetHandleInformation(child.get(), HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    }

    Handle child;
    Handle ours;
};

// As the C runtime takes command lines apart: quotes around all, backslashes doubled only where
// they stand before a quote.
std::wstring quoted(const std::wstring& argument) {
    std::wstring text = L"\"";
    unsigned backslashes = 0;
    for (const wchar_t c : argument) {
        if (c == L'"') text.append(backslashes + 1, L'\\');
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        text += c;
    }
    return text.append(backslashes, L'\\') + L'"';
}

std::wstring beside_test_program(const std::wstring& name) {
    wchar_t path[1024];
    const std::wstring program(path, GetModuleFileNameW(nullptr, path, 1024));
    return program.substr(0, program.find_last_of(L'\\') + 1) + name;
}

void read_all(HANDLE handle, std::string& bytes) {
    char buffer[1 << 14];
    DWORD count = 0;
    while (ReadFile(handle, buffer, sizeof buffer, &count, nullptr) && count != 0) {
        bytes.append(buffer, count);
    }
}

void write_all(Handle handle, const std::string& bytes) {
    DWORD count = 0;
    // A child that does not read its input to the end is in its right.
    if (!bytes.empty()) WriteFile(handle.get(), bytes.data(), bytes.size(), &count, nullptr);
}

}  // namespace

Outcome run_program(const std::wstring& name, const std::vector<std::wstring>& arguments,
                    const ChildOptions& options) {
    const std::wstring path = beside_test_program(name);
    std::wstring command = quoted(path);
    for (const std::wstring& argument : arguments) {
        command += L' ' + quoted(argument);
    }

    // A child inherits all that can be inherited when it starts: one start at a time.
    static std::mutex starting;
    std::unique_lock lock(starting);
    Pipe input(Pipe::ChildEnd::read);
    Pipe output(Pipe::ChildEnd::write);
    Pipe errors(Pipe::ChildEnd::write);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = options.has_input ? input.child.get() : output.child.get();
    startup.hStdOutput = output.child.get();
    startup.hStdError = errors.child.get();
    if (!options.reads_output) output.ours.reset();
    PROCESS_INFORMATION info{};
    if (!CreateProcessW(path.c_str(), command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                        &startup, &info)) {
        throw std::runtime_error("CreateProcessW: " + std::to_string(GetLastError()));
    }
    const Handle process(info.hProcess);
    const Handle thread(info.hThread);
    input.child.reset();
    output.child.reset();
    errors.child.reset();
    lock.unlock();

    Outcome outcome;
    std::thread writer(write_all, std::move(input.ours), std::cref(options.input));
    std::thread error_reader([&] { read_all(errors.ours.get(), outcome.errors); });
    if (options.reads_output) read_all(output.ours.get(), outcome.output);
    error_reader.join();
    writer.join();
    WaitForSingleObject(process.get(), INFINITE);
    GetExitCodeProcess(process.get(), &outcome.status);
    return outcome;
}

}  // namespace tarv_test
