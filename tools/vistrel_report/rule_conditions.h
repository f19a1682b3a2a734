// The conditions of the rules of the table. Each function uses the parts that its rule needs according to the
// table, and may assume that they are present.
#pragma once

#include "tools/vistrel_report/facts.h"
#include "tools/vistrel_report/rules.h"

namespace RuleConditions {

// What makes a report unreliable.
Judgement ProductRunning(const Facts& facts);
Judgement WrongFolder(const Facts& facts);
Judgement InjectedFiles(const Facts& facts);
Judgement SettingsUnreadable(const Facts& facts);
Judgement WarpSizesInverted(const Facts& facts);

// What ends a run or a section.
Judgement RunCrashed(const Facts& facts);
Judgement RunStopped(const Facts& facts);
Judgement SectionCrashed(const Facts& facts);

// What the product is set to.
Judgement StereoOff(const Facts& facts);
Judgement SeparationNearZero(const Facts& facts);
Judgement DepthStrengthNearZero(const Facts& facts);
Judgement DefaultsMeasured(const Facts& facts);
Judgement AiRuntimeMissing(const Facts& facts);
Judgement CustomModelMissing(const Facts& facts);
Judgement FileNotReadWhole(const Facts& facts);
Judgement LogMissing(const Facts& facts);
Judgement LogWithoutStart(const Facts& facts);
Judgement LogNamesAdapter(const Facts& facts);

// The machine.
Judgement GpuListFailed(const Facts& facts);
Judgement NoHardwareGpu(const Facts& facts);
Judgement DeviceFailed(const Facts& facts);
Judgement LowMemory(const Facts& facts);
Judgement OldWindows(const Facts& facts);
Judgement GpuSchedulingOn(const Facts& facts);
Judgement GpuNotDescribed(const Facts& facts);
Judgement DisplayWithoutGpu(const Facts& facts);
Judgement GpuChoiceIntegrated(const Facts& facts);
Judgement GpuChoiceOther(const Facts& facts);
Judgement VrSoftwareRunning(const Facts& facts);
Judgement CaptureSoftwareRunning(const Facts& facts);

// Headset and hands.
Judgement OpenXrLoaderMissing(const Facts& facts);
Judgement NoOpenXrRuntime(const Facts& facts);
Judgement HeadsetAsleep(const Facts& facts);
Judgement HeadsetGpuUnknown(const Facts& facts);
Judgement CrossGpu(const Facts& facts);
Judgement BenchmarkGpuGuessed(const Facts& facts);
Judgement HandsNotToldApart(const Facts& facts);
Judgement HandsNotWatched(const Facts& facts);

// Capture.
Judgement CaptureTaken(const Facts& facts);
Judgement CaptureDenied(const Facts& facts);
Judgement CaptureUnsupported(const Facts& facts);
Judgement CaptureWithoutFrame(const Facts& facts);
Judgement CaptureWithoutDisplay(const Facts& facts);
Judgement CaptureFailedOtherwise(const Facts& facts);
Judgement CaptureOfOtherDisplay(const Facts& facts);
Judgement FrameNotReadBack(const Facts& facts);
Judgement GameSlow(const Facts& facts);

// Costs.
Judgement WarpNotMeasured(const Facts& facts);
Judgement WarpTooDear(const Facts& facts);
Judgement ShareFatal(const Facts& facts);
Judgement ShareSignificant(const Facts& facts);
Judgement ModelTooSlow(const Facts& facts);
Judgement ModelNotTimed(const Facts& facts);
Judgement ModelUneven(const Facts& facts);
Judgement VideoMemoryFull(const Facts& facts);
Judgement PartTwoMissing(const Facts& facts);

}  // namespace RuleConditions
