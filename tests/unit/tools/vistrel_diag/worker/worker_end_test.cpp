#include "tools/vistrel_diag/worker/worker_end.h"

#include <gtest/gtest.h>

namespace {

std::string Words(std::uint32_t exit_code, const WorkerNote& note = {}) {
    return WorkerEndText(UnderstandWorkerEnd(exit_code, note));
}

TEST(WorkerEnd, NamesTheModuleOfACrash) {
    EXPECT_EQ(Words(0xC0000005, {0xC0000005, "vrclient_x64.dll", false}),
              "crashed in vrclient_x64.dll (access violation, 0xC0000005)");
    EXPECT_EQ(Words(0xE06D7363, {0xE06D7363, "KERNELBASE.dll", false}),
              "crashed in KERNELBASE.dll (C++ exception, 0xE06D7363)");
    EXPECT_EQ(Words(0xC00000FD, {0xC00000FD, "", false}), "crashed (stack overflow, 0xC00000FD)");
}

TEST(WorkerEnd, IgnoresANoteOfAnotherException) {
    EXPECT_EQ(Words(0xC0000005, {0xE06D7363, "handled.dll", false}),
              "crashed (access violation, 0xC0000005)");
    EXPECT_EQ(Words(7, {0xE06D7363, "handled.dll", false}), "ended its process (exit code 7)");
}

TEST(WorkerEnd, NamesCrashesThatNoHandlerSees) {
    EXPECT_EQ(Words(0xC0000409), "crashed (fail-fast, 0xC0000409)");
    EXPECT_EQ(Words(0xC0000374), "crashed (heap corruption, 0xC0000374)");
    EXPECT_EQ(Words(0xC0001234), "crashed (exception 0xC0001234)");
}

TEST(WorkerEnd, PrintsTheCodeOfAnUnnamedException) {
    EXPECT_EQ(Words(0x12345678, {0x12345678, "own.dll", false}), "crashed in own.dll (exception 0x12345678)");
}

TEST(WorkerEnd, NamesAnAbort) {
    EXPECT_EQ(Words(3, {0, "", true}), "aborted");
}

TEST(WorkerEnd, PrintsAnExitCode) {
    EXPECT_EQ(Words(0), "ended its process (exit code 0)");
    EXPECT_EQ(Words(255), "ended its process (exit code 255)");
    EXPECT_EQ(Words(0xFFFFFFFF), "ended its process (exit code 0xFFFFFFFF)");
}

TEST(WorkerEnd, ReportsAWorkerThatStoppedResponding) {
    WorkerEnd end;
    end.kind = WorkerEnd::Kind::Silent;
    end.silent_seconds = 60;
    EXPECT_EQ(WorkerEndText(end), "gave no sign of life for 60 seconds and was ended");
    end.kind = WorkerEnd::Kind::Lost;
    EXPECT_EQ(WorkerEndText(end), "could not be waited for and was ended");
}

}  // namespace
