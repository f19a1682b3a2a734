// A console that behaves like the one of Windows, with a scripted person. Includes no Windows header.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "tests/lab/console/console_script.h"

namespace lab {

enum class ControlEvent { kCtrlC, kClose };

/// The console's callbacks. Every function may be called by any thread that uses the console.
struct ConsoleSurroundings {
    /// Receives one line of the record, without its line end.
    std::function<void(const std::string& line)> record;
    /// Runs the program's handlers later on another thread. Must not call the console back before it returns.
    std::function<void(ControlEvent event)> raise;
    std::function<std::int64_t()> microseconds;
};

/// How a read ended.
struct ConsoleRead {
    enum class End {
        kText,
        kInterrupted,  ///< by Ctrl-C: on Windows a success that reads nothing
        kScriptEnded,  ///< the script has ended, so no more keys will come
    };
    End end = End::kText;
    std::string text;
};

/// One console. Any thread may use it. Everything that changes it or that it shows goes into the record:
///
///     write "TEXT" | echo "TEXT" | title "TEXT"      with \r, \n, \xHH and \" in place of such characters
///     input mode 0x1B7 | output mode 0x7 | code page 65001
///     flush 3                                        this many keys were discarded
///     frozen                                         a click stopped the output
///     read "TEXT" | read interrupted | read after the script
///     Ctrl-C | close
///
/// With times, "at 1.234567 s" begins each line.
class ConsoleHost {
  public:
    ConsoleHost(ConsoleScript script, ConsoleSurroundings surroundings);

    std::uint32_t InputMode() const { return Locked(input_mode_); }
    std::uint32_t OutputMode() const { return Locked(output_mode_); }
    /// False if Windows rejects the mode.
    bool SetInputMode(std::uint32_t mode);
    bool SetOutputMode(std::uint32_t mode);

    std::uint32_t CodePage() const { return Locked(code_page_); }
    void SetCodePage(std::uint32_t code_page);
    std::string Title() const { return Locked(title_); }
    void SetTitle(const std::string& title);
    int Columns() const { return script_.columns; }
    int Processes() const { return script_.processes; }

    /// UTF-8.
    void Write(std::string_view text);

    /// Reads at most `size` bytes of a line; the next read returns the rest. Without line mode, returns what
    /// has been typed so far.
    ConsoleRead Read(std::size_t size);

    /// The unread keys, which are not removed.
    std::string Keys();
    /// Removes this many keys from the front.
    void TakeKeys(std::size_t count);
    void FlushKeys();

  private:
    template <typename Value>
    Value Locked(const Value& value) const {
        const std::scoped_lock lock(mutex_);
        return value;
    }

    void Record(const std::string& line);
    void RecordText(const char* what, std::string_view text);
    void GoOnWithScript();
    bool Do(const ConsoleStep& step);
    void PressCtrlC();
    bool TakeTypedLine();

    const ConsoleScript script_;
    const ConsoleSurroundings surroundings_;
    mutable std::mutex mutex_;
    std::uint32_t input_mode_;
    bool quick_edit_;
    std::uint32_t output_mode_;
    std::uint32_t code_page_;
    std::string title_;
    std::string written_;
    std::size_t seen_ = 0;  ///< in `written_`
    std::size_t next_step_ = 0;
    bool reading_ = false;
    bool interrupted_ = false;
    std::string keys_;
    std::string line_;  ///< a line ended by Enter and not completely read yet
};

}  // namespace lab
