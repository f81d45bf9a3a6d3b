// The library's message boxes, answered.
#pragma once

#include <string>
#include <thread>
#include <vector>

#include <windows.h>

namespace tarv_test {

// Waits for boxes in a thread of its own, and gives each the next of the answers.
class BoxAnswers {
public:
    explicit BoxAnswers(std::vector<int> buttons)
        : thread_([this, buttons = std::move(buttons)] {
              for (const int button : buttons)
                  answer(button);
          }) {}
    ~BoxAnswers() {
        if (thread_.joinable()) thread_.join();
    }

    // What stood in the last box; waits until all have been answered.
    const std::wstring& last_text() {
        thread_.join();
        return text_;
    }

private:
    void answer(int button) {
        HWND box = nullptr;
        while ((box = FindWindowW(nullptr, L"Varnholt Core Library")) == nullptr || box == last_)
            Sleep(1);
        constexpr int text_item = 0xFFFF;
        HWND item = nullptr;
        while ((item = GetDlgItem(box, text_item)) == nullptr)
            Sleep(1);
        text_.resize(static_cast<std::size_t>(GetWindowTextLengthW(item)) + 1);
        text_.resize(static_cast<std::size_t>(
            GetWindowTextW(item, text_.data(), static_cast<int>(text_.size()))));
        // A box that is not ready yet drops what it gets.
        while (IsWindow(box)) {
            PostMessageW(box, WM_COMMAND, static_cast<WPARAM>(button), 0);
            Sleep(10);
        }
        last_ = box;
    }

    std::wstring text_;
    HWND last_ = nullptr;
    std::thread thread_;
};

}  // namespace tarv_test
