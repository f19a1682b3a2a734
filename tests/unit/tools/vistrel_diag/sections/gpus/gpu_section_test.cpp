#include "tools/vistrel_diag/sections/gpus/gpu_section.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/unit/support/report_capture.h"

namespace {

constexpr std::uint64_t kMegabyte = 1048576;

ProbedGpu Gpu(std::uint32_t index, const char* name, std::uint32_t vendor_id = 0x10DE) {
    ProbedGpu probed;
    probed.gpu.index = index;
    probed.gpu.name = name;
    probed.gpu.vendor_id = vendor_id;
    return probed;
}

ProbedGpu SoftwareGpu(std::uint32_t index) {
    ProbedGpu probed = Gpu(index, "Microsoft Basic Render Driver", 0x1414);
    probed.gpu.software = true;
    return probed;
}

std::string SectionOf(std::vector<ProbedGpu> gpus) {
    const ReportCapture report;
    for (const ProbedGpu& probed : gpus) {
        PrintGpu(probed.gpu);
        if (probed.memory) {
            PrintGpuMemory(*probed.memory);
        }
    }
    PrintGpuSectionEnd({true, std::move(gpus)});
    return report.Text();
}

std::string VramLinesOf(const std::vector<ProbedGpu>& gpus) {
    const ReportCapture report;
    PrintVramLines("while the game is running", gpus);
    return report.Text();
}

TEST(GpuSection, DescribesADesktopMachine) {
    ProbedGpu card = Gpu(0, "NVIDIA GeForce RTX 4090");
    card.gpu.luid = {0x0001A2B3, 0};
    card.gpu.dedicated_video_memory = 24564 * kMegabyte;
    card.gpu.shared_system_memory = 16334 * kMegabyte;
    card.gpu.displays = {R"(\\.\DISPLAY1)", R"(\\.\DISPLAY2)"};
    card.memory = VideoMemoryUse{1024 * kMegabyte, 4096 * kMegabyte, 512 * kMegabyte};
    EXPECT_EQ(SectionOf({card, SoftwareGpu(1)}), R"(GPU 0           : NVIDIA GeForce RTX 4090 [NVIDIA]
  VRAM          : 24564 MB dedicated, 16334 MB shared system
  LUID          : 00000000:0001A2B3
  Displays      : \\.\DISPLAY1, \\.\DISPLAY2
  VRAM in use   : 1024 MB of 4096 MB budget (25%)
  VRAM reserved : 512 MB
GPU 1           : Microsoft Basic Render Driver [Microsoft] (software)
  VRAM          : 0 MB dedicated, 0 MB shared system
  LUID          : 00000000:00000000
  Displays      : NONE attached to this GPU
)");
}

TEST(GpuSection, NotesASecondHardwareGpu) {
    EXPECT_EQ(SectionOf({Gpu(0, "A"), SoftwareGpu(1), Gpu(2, "B")}), R"(GPU 0           : A [NVIDIA]
  VRAM          : 0 MB dedicated, 0 MB shared system
  LUID          : 00000000:00000000
  Displays      : NONE attached to this GPU
GPU 1           : Microsoft Basic Render Driver [Microsoft] (software)
  VRAM          : 0 MB dedicated, 0 MB shared system
  LUID          : 00000000:00000000
  Displays      : NONE attached to this GPU
GPU 2           : B [NVIDIA]
  VRAM          : 0 MB dedicated, 0 MB shared system
  LUID          : 00000000:00000000
  Displays      : NONE attached to this GPU

NOTE: more than one hardware GPU is present. Which one drives the monitor decides whether capture is a local copy or a bus transfer.
)");
}

TEST(GpuSection, DoesNotNoteSoftwareAdapters) {
    EXPECT_EQ(SectionOf({SoftwareGpu(0), SoftwareGpu(1), Gpu(2, "A")}).find("NOTE"), std::string::npos);
}

TEST(GpuSection, ReportsAMissingDxgi) {
    const ReportCapture report;
    PrintGpuSectionEnd({});
    EXPECT_EQ(report.Text(), "!! CreateDXGIFactory1 failed - cannot enumerate GPUs.\n");
}

TEST(GpuSection, WithoutAnyAdapterIsEmpty) {
    EXPECT_EQ(SectionOf({}), "");
}

TEST(GpuSection, NamesTheVendor) {
    const auto vendor_of = [](std::uint32_t id) {
        const std::string section = SectionOf({Gpu(0, "x", id)});
        return section.substr(0, section.find('\n'));
    };
    EXPECT_EQ(vendor_of(0x1002), "GPU 0           : x [AMD]");
    EXPECT_EQ(vendor_of(0x10DE), "GPU 0           : x [NVIDIA]");
    EXPECT_EQ(vendor_of(0x1414), "GPU 0           : x [Microsoft]");
    EXPECT_EQ(vendor_of(0x8086), "GPU 0           : x [Intel]");
    EXPECT_EQ(vendor_of(0), "GPU 0           : x [?]");
    EXPECT_EQ(vendor_of(0x5143), "GPU 0           : x [?]");
}

TEST(GpuSection, PrintsTheLuidHighHalfFirstAsABitPattern) {
    ProbedGpu probed = Gpu(0, "x");
    probed.gpu.luid = {0xCAFE, -2};
    EXPECT_NE(SectionOf({probed}).find("  LUID          : FFFFFFFE:0000CAFE\n"), std::string::npos);
}

TEST(GpuSection, AnOutputWithoutANameStillCounts) {
    ProbedGpu probed = Gpu(0, "x");
    probed.gpu.displays = {""};
    EXPECT_NE(SectionOf({probed}).find("  Displays      : \n"), std::string::npos);
    probed.gpu.displays = {"a", "", "a"};
    EXPECT_NE(SectionOf({probed}).find("  Displays      : a, , a\n"), std::string::npos);
}

TEST(GpuSection, AZeroBudgetIsUsedToZeroPercent) {
    ProbedGpu probed = Gpu(0, "x");
    probed.memory = VideoMemoryUse{5 * kMegabyte, 0, 0};
    const std::string section = SectionOf({probed});
    EXPECT_NE(section.find("  VRAM in use   : 5 MB of 0 MB budget (0%)\n"), std::string::npos);
    EXPECT_EQ(section.find("reserved"), std::string::npos);
}

TEST(GpuSection, AReservationOfOneByteIsShown) {
    ProbedGpu probed = Gpu(0, "x");
    probed.memory = VideoMemoryUse{0, kMegabyte, 1};
    EXPECT_NE(SectionOf({probed}).find("  VRAM reserved : 0 MB\n"), std::string::npos);
}

TEST(GpuSection, PrintsTheLargestNumbers) {
    ProbedGpu probed = Gpu(0xFFFFFFFF, "%s%n");
    probed.gpu.dedicated_video_memory = UINT64_MAX;
    probed.memory = VideoMemoryUse{UINT64_MAX, 1, UINT64_MAX};
    const std::string section = SectionOf({probed});
    EXPECT_TRUE(
        section.starts_with("GPU 4294967295           : %s%n [NVIDIA]\n"
                            "  VRAM          : 17592186044416 MB dedicated, 0 MB shared system\n"))
        << section;
}

TEST(GpuListTest, HoldsWhatItWasGiven) {
    SetGpuList({Gpu(3, "x").gpu});
    ASSERT_EQ(GpuList().size(), 1U);
    EXPECT_EQ(GpuList().front().index, 3U);
    SetGpuList({});
    EXPECT_TRUE(GpuList().empty());
}

TEST(VramLines, AlignTheNames) {
    ProbedGpu card = Gpu(0, "NVIDIA GeForce RTX 4090");
    card.memory = VideoMemoryUse{12000 * kMegabyte, 24000 * kMegabyte, 0};
    ProbedGpu other = Gpu(2, "A name that is longer than its column is");
    other.memory = VideoMemoryUse{1, 0, 0};
    EXPECT_EQ(VramLinesOf({card, SoftwareGpu(1), other}), R"(VRAM while the game is running:
  GPU 0 NVIDIA GeForce RTX 4090            12000 MB of 24000 MB  (50%)
  GPU 2 A name that is longer than its column is 0 MB of 0 MB  (0%)
)");
}

TEST(VramLines, LeaveOutSoftwareAndUnreadableAdapters) {
    ProbedGpu software = SoftwareGpu(0);
    software.memory = VideoMemoryUse{1, 1, 0};
    EXPECT_EQ(VramLinesOf({software, Gpu(1, "no answer")}), "VRAM while the game is running:\n");
    EXPECT_EQ(VramLinesOf({}), "VRAM while the game is running:\n");
}

TEST(VramLines, MarkAGpuAboveNinetyPercentOfItsBudget) {
    const auto line_at = [](std::uint64_t usage) {
        ProbedGpu probed = Gpu(0, "x");
        probed.memory = VideoMemoryUse{usage * kMegabyte, 10000 * kMegabyte, 0};
        const std::string lines = VramLinesOf({probed});
        return lines.substr(lines.find("  GPU"));
    };
    const std::string name = "  GPU 0 x" + std::string(34, ' ');
    EXPECT_EQ(line_at(9000), name + "9000 MB of 10000 MB  (90%)\n");
    EXPECT_EQ(line_at(9001), name + "9001 MB of 10000 MB  (90%)   <<< OUT OF HEADROOM\n");
    EXPECT_EQ(line_at(9010), name + "9010 MB of 10000 MB  (90%)   <<< OUT OF HEADROOM\n");
    EXPECT_EQ(line_at(11000), name + "11000 MB of 10000 MB  (110%)   <<< OUT OF HEADROOM\n");
}

TEST(VramLines, DoNotUseNamesAndLabelsAsFormats) {
    ProbedGpu probed = Gpu(0, "%n");
    probed.memory = VideoMemoryUse{};
    const ReportCapture report;
    PrintVramLines("%s", {probed});
    EXPECT_TRUE(report.Text().starts_with("VRAM %s:\n  GPU 0 %n  ")) << report.Text();
}

}  // namespace
