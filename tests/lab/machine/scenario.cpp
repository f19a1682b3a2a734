#include "tests/lab/machine/scenario.h"

#include <functional>
#include <map>

#include "platform/utf8.h"
#include "tests/lab/fatal_failure.h"
#include "tests/lab/machine/scenario_words.h"

namespace lab {
namespace {

constexpr std::uint64_t kBytesPerMegabyte = 1024 * 1024;

/// Reads line by line; each block's statements belong to the last adapter, output or loss that was opened.
class ScenarioReader {
  public:
    Scenario Read(std::istream& text) {
        std::string line;
        for (int number = 1; std::getline(text, line); ++number) {
            try {
                ReadLine(line);
            } catch (const ScenarioError& error) {
                throw ScenarioError("line " + std::to_string(number) + ": " + error.what());
            }
        }
        Finish();
        return scenario_;
    }

  private:
    enum class Block { kMachine, kAdapter, kOutput, kLoss, kDisplay };
    using Statements = std::map<std::string, std::function<void(Words&)>, std::less<>>;

    void ReadLine(const std::string& line) {
        Words words(line);
        if (words.AtEnd()) {
            return;
        }
        const std::string first = words.Next("a statement");
        const Statements& statements = StatementsOf(block_);
        if (block_ == Block::kMachine && IsFatalFailure(first)) {
            ReadFatalFailure(first, words);
        } else if (const auto inner = statements.find(first); inner != statements.end()) {
            inner->second(words);
        } else if (const auto opening = openings_.find(first); opening != openings_.end()) {
            opening->second(words);
        } else {
            throw ScenarioError("'" + first + "' is not understood here");
        }
        words.ExpectEnd();
    }

    const Statements& StatementsOf(Block block) const {
        switch (block) {
            case Block::kAdapter:
                return of_adapter_;
            case Block::kOutput:
                return of_output_;
            case Block::kLoss:
                return of_loss_;
            case Block::kDisplay:
                return of_display_;
            case Block::kMachine:
                break;
        }
        return of_machine_;
    }

    Adapter& LastAdapter() { return scenario_.adapters.back(); }
    Output& LastOutput() { return scenario_.outputs.back(); }
    Display& LastDisplay() { return scenario_.displays.back(); }
    Loss& LastLoss() { return LastOutput().losses.back(); }

    void OpenAdapter(Words& words) {
        Adapter adapter;
        adapter.name = Utf16FromUtf8(words.Rest());
        adapter.luid_low = 0xA001 + static_cast<std::uint32_t>(scenario_.adapters.size());
        scenario_.adapters.push_back(adapter);
        block_ = Block::kAdapter;
    }

    void OpenDisplay(Words& words) {
        Display display;
        display.name = Utf16FromUtf8(words.Rest());
        display.size = {1920, 1080};
        scenario_.displays.push_back(display);
        block_ = Block::kDisplay;
    }

    void OpenOutput(Words& words) {
        if (scenario_.adapters.empty()) {
            throw ScenarioError("an output needs an adapter above it");
        }
        OpenDisplay(words);
        Output output;
        output.adapter = scenario_.adapters.size() - 1;
        output.display = scenario_.displays.size() - 1;
        scenario_.outputs.push_back(output);
        block_ = Block::kOutput;
    }

    void OpenLoss(Words& words) {
        if (block_ != Block::kOutput && block_ != Block::kLoss) {
            throw ScenarioError("a loss needs an output above it");
        }
        words.Expect("after");
        const int count = words.Number("how long after");
        Loss loss;
        (words.OneOf({"frames", "ms"}) == "frames" ? loss.after_frames : loss.after_milliseconds) = count;
        LastOutput().losses.push_back(loss);
        block_ = Block::kLoss;
    }

    void ReadCursor(Words& words) {
        Cursor& cursor = scenario_.cursor;
        const std::string state = words.OneOf({"fails", "hidden", "at", "null"});
        cursor.query_fails = state == "fails";
        cursor.showing = state == "at" || state == "null";
        cursor.null_handle = state == "null";
        if (state == "null") {
            words.Expect("at");
        }
        if (cursor.showing) {
            std::tie(cursor.x, cursor.y) = words.Point();
        }
    }

    void ReadDraws(Words& words) {
        if (words.Peek() == "black") {
            words.Expect("black");
            LastAdapter().black_draw_rate = words.Rate("megapixels");
        } else {
            LastAdapter().draw_rate = words.Rate("megapixels");
        }
    }

    void ReadRamp(Words& words) {
        words.Expect("up");
        words.Expect("from");
        ClockRamp ramp;
        ramp.from_percent = words.Number("a percentage");
        words.Expect("percent");
        words.Expect("over");
        ramp.milliseconds = words.Number("how long");
        words.Expect("ms");
        if (ramp.from_percent < 1 || ramp.from_percent > 100 || ramp.milliseconds < 1) {
            throw ScenarioError("a clock goes up from 1 to 100 percent, over 1 ms or more");
        }
        LastAdapter().ramp = ramp;
    }

    void ReadStamps(Words& words) {
        if (words.Peek() == "disjoint" || words.Peek() == "never") {
            LastAdapter().stamp_trouble =
                words.Next("a trouble") == "never" ? StampTrouble::kNever : StampTrouble::kDisjoint;
            return;
        }
        LastAdapter().stamps_late_milliseconds = words.Number("how late");
        words.Expect("ms");
        words.Expect("late");
    }

    void ReadMemory(Words& words) {
        if (words.Peek() == "fails") {
            LastAdapter().memory_fails = words.FailsWith();
            return;
        }
        if (words.Peek() == "falls") {
            words.Expect("falls");
            LastAdapter().memory_falls_milliseconds = words.Number("how late");
            words.Expect("ms");
            words.Expect("late");
            return;
        }
        if (words.Peek() == "drifts") {
            words.Expect("drifts");
            LastAdapter().memory_drift_bytes = words.Megabytes() * kBytesPerMegabyte;
            return;
        }
        LastAdapter().used_bytes = words.Megabytes() * kBytesPerMegabyte;
        words.Expect("of");
        LastAdapter().budget_bytes = words.Megabytes() * kBytesPerMegabyte;
    }

    void ReadWithout(Words& words) {
        if (words.OneOf({"IDXGIAdapter3", "IDXGIOutput1"}) == "IDXGIAdapter3") {
            LastAdapter().without_adapter3 = true;
        } else if (block_ == Block::kOutput) {
            LastOutput().without_output1 = true;
        } else {
            throw ScenarioError("only an output can be without IDXGIOutput1");
        }
    }

    void ReadFatalFailure(const std::string& kind, Words& words) {
        const std::string function =
            words.OneOf({"AcquireNextFrame", "CopyResource", "CreateDXGIFactory1", "D3D11CreateDevice",
                         "DuplicateOutput", "QueryVideoMemoryInfo"});
        FatalFailure failure = {kind};
        if (!words.AtEnd()) {
            words.Expect("at");
            words.Expect("call");
            failure.call = words.Number("which call");
        }
        scenario_.fatal_failures[function] = failure;
    }

    static void ReadFrames(Words& words, Frames& frames) {
        if (words.Peek() == "still" || words.Peek() == "never") {
            frames.never = words.Next("a rate") == "never";
            frames.rate = 0;
        } else {
            frames.rate = words.Rate("");
        }
    }

    static void ReadPointer(Words& words, Frames& frames) {
        words.Expect("moves");
        frames.pointer_rate = words.Rate("");
    }

    void Finish() const {
        for (const Output& output : scenario_.outputs) {
            for (const Loss& loss : output.losses) {
                if (loss.adapter && *loss.adapter >= scenario_.adapters.size()) {
                    throw ScenarioError("an output moves to an adapter that the scenario does not have");
                }
            }
        }
    }

    Scenario scenario_;
    Block block_ = Block::kMachine;

    const Statements openings_ = {
        {"adapter", [this](Words& words) { OpenAdapter(words); }},
        {"output", [this](Words& words) { OpenOutput(words); }},
        {"display", [this](Words& words) { OpenDisplay(words); }},
        {"lost", [this](Words& words) { OpenLoss(words); }},
    };
    const Statements of_machine_ = {
        {"clock",
         [this](Words& words) {
             scenario_.scripted_clock = words.OneOf({"real", "scripted"}) == "scripted";
         }},
        {"cursor", [this](Words& words) { ReadCursor(words); }},
        {"program",
         [this](Words& words) {
             words.Expect("at");
             scenario_.program_path = words.Rest();
         }},
        {"loads", [this](Words& words) { scenario_.library = words.Rest(); }},
        {"factory", [this](Words& words) { scenario_.factory_fails = words.FailsWith(); }},
        {"device", [this](Words& words) { scenario_.device_fails = words.FailsWith(); }},
        {"adapters", [this](Words& words) { scenario_.adapters_end_with = words.EndWith(); }},
    };
    const Statements of_adapter_ = {
        {"vendor", [this](Words& words) { LastAdapter().vendor = words.Code(); }},
        {"luid",
         [this](Words& words) { std::tie(LastAdapter().luid_high, LastAdapter().luid_low) = words.Luid(); }},
        {"dedicated",
         [this](Words& words) { LastAdapter().dedicated_bytes = words.Megabytes() * kBytesPerMegabyte; }},
        {"shared",
         [this](Words& words) { LastAdapter().shared_bytes = words.Megabytes() * kBytesPerMegabyte; }},
        {"memory", [this](Words& words) { ReadMemory(words); }},
        {"reserved",
         [this](Words& words) { LastAdapter().reserved_bytes = words.Megabytes() * kBytesPerMegabyte; }},
        {"draws", [this](Words& words) { ReadDraws(words); }},
        {"clocks", [this](Words& words) { ReadRamp(words); }},
        {"stamps", [this](Words& words) { ReadStamps(words); }},
        {"mapping",
         [this](Words& words) {
             words.Expect("fails");
             LastAdapter().mapping = words.RefusalOf();
         }},
        {"remote", [this](Words&) { LastAdapter().remote = true; }},
        {"software", [this](Words&) { LastAdapter().software = true; }},
        {"without", [this](Words& words) { ReadWithout(words); }},
        {"enumeration", [this](Words& words) { LastAdapter().enumeration_fails = words.FailsWith(); }},
        {"description", [this](Words& words) { LastAdapter().description_fails = words.FailsWith(); }},
        {"device", [this](Words& words) { LastAdapter().device_fails = words.FailsWith(); }},
        {"outputs", [this](Words& words) { LastAdapter().outputs_end_with = words.EndWith(); }},
    };
    const Statements of_display_ = {
        {"size", [this](Words& words) { LastDisplay().size = words.Dimensions(); }},
        {"at", [this](Words& words) { std::tie(LastDisplay().left, LastDisplay().top) = words.Point(); }},
        {"rate", [this](Words& words) { LastDisplay().refresh_rate = words.Number("a refresh rate"); }},
        {"primary", [this](Words&) { LastDisplay().primary = true; }},
        {"detached", [this](Words&) { LastDisplay().attached = false; }},
        {"mirror", [this](Words&) { LastDisplay().mirror = true; }},
        {"mode",
         [this](Words& words) {
             words.Expect("fails");
             LastDisplay().mode_fails = true;
         }},
    };
    const Statements of_output_ = WithMore(
        of_display_,
        {
            {"rotated", [this](Words& words) { LastOutput().rotation = words.Number("degrees"); }},
            {"without", [this](Words& words) { ReadWithout(words); }},
            {"enumeration", [this](Words& words) { LastOutput().enumeration_fails = words.FailsWith(); }},
            {"description", [this](Words& words) { LastOutput().description_fails = words.FailsWith(); }},
            {"frames", [this](Words& words) { ReadFrames(words, LastOutput().frames); }},
            {"first",
             [this](Words& words) {
                 words.Expect("image");
                 words.Expect("blank");
                 LastOutput().frames.first_blank = true;
             }},
            {"pointer", [this](Words& words) { ReadPointer(words, LastOutput().frames); }},
            {"hdr", [this](Words&) { LastOutput().hdr = true; }},
            {"format", [this](Words& words) { LastOutput().format = words.Format(); }},
            {"refuses", [this](Words& words) { LastOutput().refusal = words.RefusalOf(); }},
            {"acquiring",
             [this](Words& words) {
                 words.Expect("fails");
                 LastOutput().acquiring = words.RefusalOf();
             }},
            {"picture",
             [this](Words& words) {
                 LastOutput().picture =
                     words.OneOf({"pattern", "desktop"}) == "desktop" ? Picture::kDesktop : Picture::kPattern;
             }},
        });
    const Statements of_loss_ = {
        {"size", [this](Words& words) { LastLoss().size = words.Dimensions(); }},
        {"format", [this](Words& words) { LastLoss().format = words.Format(); }},
        {"moves",
         [this](Words& words) {
             words.Expect("to");
             LastLoss().adapter = static_cast<std::size_t>(words.Number("an adapter's position"));
         }},
        {"refuses", [this](Words& words) { LastLoss().refusal = words.RefusalOf(); }},
        {"unplugged", [this](Words&) { LastLoss().unplugged = true; }},
    };

    static Statements WithMore(Statements statements, const Statements& more) {
        statements.insert(more.begin(), more.end());
        return statements;
    }
};

}  // namespace

Scenario ReadScenario(std::istream& text) {
    return ScenarioReader().Read(text);
}

}  // namespace lab
