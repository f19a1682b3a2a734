#include "render/stereo_warp_shader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "log/logger.h"
#include "tests/lab/tests/lab_device.h"
#include "tests/unit/support/executable_folder_seam.h"
#include "tests/unit/support/scripted_com.h"
#include "tests/unit/support/scripted_compiler.h"

namespace {

using Microsoft::WRL::ComPtr;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr const char* kShaderFile = "vistrel\\shaders\\stereo_warp.hlsl";
constexpr const char* kPlainShader = "float4 PSMain() : SV_Target { return 1; }";

/// The lines that this object has seen logged, without their time.
class LogCapture {
  public:
    LogCapture() : before_(Logger::instance().History().size()) {}

    std::vector<std::string> Lines() const {
        std::vector<std::string> lines = Logger::instance().History();
        lines.erase(lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(before_));
        for (std::string& line : lines) {
            line.erase(0, line.find('['));
        }
        return lines;
    }

  private:
    std::size_t before_;
};

/// A build tree with the executable three folders deep, and a different current folder.
class StereoWarpShaderTest : public testing::Test {
  protected:
    StereoWarpShaderTest() : previous_(std::filesystem::current_path()) {
        std::filesystem::remove_all(root_);
        executable_folder = root_ / "tree" / "out" / "x64" / "release";
        std::filesystem::create_directories(executable_folder);
        std::filesystem::create_directories(current_);
        std::filesystem::current_path(current_);
    }
    ~StereoWarpShaderTest() override {
        scripted_compile = nullptr;
        std::filesystem::current_path(previous_);
        std::filesystem::remove_all(root_);
    }

    static void Write(const std::filesystem::path& folder, const std::string& source) {
        std::filesystem::create_directories((folder / kShaderFile).parent_path());
        std::ofstream(folder / kShaderFile, std::ios::binary) << source;
    }

    std::string BesidePath() const { return ExecutableFolder() + "\\" + kShaderFile; }
    std::string AbovePath() const { return ExecutableFolder() + "\\..\\..\\..\\" + kShaderFile; }
    std::filesystem::path Above() const { return root_ / "tree"; }
    std::filesystem::path Current() const { return current_; }

    /// Loads the shader again and returns what was logged.
    std::vector<std::string> LogOfLoad(bool expected) {
        const LogCapture log;
        StereoWarpShader shader;
        EXPECT_EQ(shader.Load(lab_.device.Get()), expected);
        return log.Lines();
    }

    LabDevice lab_;

  private:
    std::filesystem::path previous_;
    std::filesystem::path root_ = std::filesystem::temp_directory_path() / L"stereo_warp_shader_test Ünïcødé";
    std::filesystem::path current_ = root_ / "elsewhere";
};

TEST_F(StereoWarpShaderTest, PrefersTheFileBesideTheExecutable) {
    Write(executable_folder, kPlainShader);
    Write(Above(), kPlainShader);
    Write(Current(), kPlainShader);
    EXPECT_THAT(LogOfLoad(true), ElementsAre("[INFO ] [Vistrel 3D] shader compiled from " + BesidePath()));
}

TEST_F(StereoWarpShaderTest, FindsTheFileInTheBuildTree) {
    Write(Above(), kPlainShader);
    Write(Current(), kPlainShader);
    EXPECT_THAT(LogOfLoad(true), ElementsAre("[INFO ] [Vistrel 3D] shader compiled from " + AbovePath()));
}

TEST_F(StereoWarpShaderTest, FindsTheFileInTheCurrentFolder) {
    Write(Current(), kPlainShader);
    EXPECT_THAT(LogOfLoad(true),
                ElementsAre(std::string("[INFO ] [Vistrel 3D] shader compiled from ") + kShaderFile));
}

TEST_F(StereoWarpShaderTest, SkipsAnEmptyFile) {
    Write(executable_folder, "");
    Write(Above(), "");
    Write(Current(), kPlainShader);
    EXPECT_THAT(LogOfLoad(true),
                ElementsAre(std::string("[INFO ] [Vistrel 3D] shader compiled from ") + kShaderFile));
}

TEST_F(StereoWarpShaderTest, FailsWithoutAFileAndLogsItOnce) {
    const LogCapture log;
    StereoWarpShader shader;
    EXPECT_EQ(shader.LastError(), "");
    EXPECT_FALSE(shader.Load(lab_.device.Get()));
    EXPECT_EQ(shader.LastError(), "stereo_warp.hlsl not found next to the executable");
    Write(Current(), kPlainShader);
    EXPECT_FALSE(shader.Load(lab_.device.Get()));
    EXPECT_THAT(log.Lines(),
                ElementsAre("[ERROR] [Vistrel 3D] stereo_warp.hlsl not found next to the executable"));
}

TEST_F(StereoWarpShaderTest, DoesNothingWithoutADevice) {
    const LogCapture log;
    StereoWarpShader shader;
    EXPECT_FALSE(shader.Load(nullptr));
    EXPECT_EQ(shader.LastError(), "");
    EXPECT_THAT(log.Lines(), IsEmpty());
    Write(Current(), kPlainShader);
    EXPECT_TRUE(shader.Load(lab_.device.Get()));
}

TEST_F(StereoWarpShaderTest, AReadyShaderNoLongerNeedsItsFile) {
    Write(Current(), kPlainShader);
    StereoWarpShader shader;
    ASSERT_TRUE(shader.Load(lab_.device.Get()));
    Write(Current(), "no shader");
    const LogCapture log;
    EXPECT_TRUE(shader.Load(lab_.device.Get()));
    EXPECT_TRUE(shader.Load(nullptr));
    EXPECT_THAT(log.Lines(), IsEmpty());
}

TEST_F(StereoWarpShaderTest, QuotesTheCompiler) {
    Write(executable_folder, "float4 PSMain() : SV_Target\n{\n    return unheard_of;\n}\n");
    const LogCapture log;
    StereoWarpShader shader;
    EXPECT_FALSE(shader.Load(lab_.device.Get()));
    EXPECT_EQ(shader.LastError(),
              BesidePath() + "(3,12-21): error X3004: undeclared identifier 'unheard_of'\n" + BesidePath() +
                  "(3,5-22): error X3080: 'PSMain': function must return a value\n");
    EXPECT_THAT(log.Lines(), ElementsAre("[ERROR] [Vistrel 3D] " + shader.LastError()));
}

TEST_F(StereoWarpShaderTest, CompilesPSMain) {
    Write(Current(), "float4 main() : SV_Target { return 1; }");
    StereoWarpShader shader;
    EXPECT_FALSE(shader.Load(lab_.device.Get()));
    EXPECT_THAT(shader.LastError(), HasSubstr("PSMain"));
}

TEST_F(StereoWarpShaderTest, CompilesStrictly) {
    // Accepted only without strictness.
    Write(Current(), "float4 PSMain(uniform float4 tint) : COLOR { return tint; }");
    StereoWarpShader shader;
    EXPECT_FALSE(shader.Load(lab_.device.Get()));
    EXPECT_THAT(shader.LastError(), HasSubstr("error X"));
}

TEST_F(StereoWarpShaderTest, ReportsAFailureWithoutCompilerMessages) {
    Write(Current(), kPlainShader);
    scripted_compile = [](std::string_view, ID3DBlob**, ID3DBlob**) { return E_FAIL; };
    EXPECT_THAT(LogOfLoad(false), ElementsAre("[ERROR] [Vistrel 3D] D3DCompile failed"));
}

TEST_F(StereoWarpShaderTest, TreatsSuccessWithoutBytecodeAsAFailure) {
    Write(Current(), kPlainShader);
    scripted_compile = [](std::string_view, ID3DBlob**, ID3DBlob**) { return S_OK; };
    EXPECT_THAT(LogOfLoad(false), ElementsAre("[ERROR] [Vistrel 3D] D3DCompile failed"));
}

TEST_F(StereoWarpShaderTest, FailsWhenThePixelShaderCannotBeCreated) {
    Write(Current(), kPlainShader);
    ScriptedDevice scripted(lab_.device.Get());
    scripted.result_of_call = [](int) { return E_INVALIDARG; };
    EXPECT_THAT(LogOfLoad(false), ElementsAre("[ERROR] [Vistrel 3D] CreatePixelShader failed"));
    EXPECT_EQ(scripted.Calls(), 1);
    EXPECT_EQ(scripted.LivingObjects(), 0);
}

TEST_F(StereoWarpShaderTest, ReleasesThePixelShaderWhenTheBufferCannotBeCreated) {
    Write(Current(), kPlainShader);
    ScriptedDevice scripted(lab_.device.Get());
    scripted.result_of_call = [](int call) { return call == 2 ? E_OUTOFMEMORY : S_OK; };
    const LogCapture log;
    StereoWarpShader shader;
    EXPECT_FALSE(shader.Load(lab_.device.Get()));
    EXPECT_EQ(scripted.LivingObjects(), 0);
    EXPECT_FALSE(shader.Load(lab_.device.Get()));
    EXPECT_EQ(scripted.Calls(), 2);
    EXPECT_EQ(shader.LastError(), "constant buffer creation failed");
    EXPECT_THAT(log.Lines(), ElementsAre("[ERROR] [Vistrel 3D] constant buffer creation failed"));
}

TEST_F(StereoWarpShaderTest, ReleasesEverything) {
    Write(Current(), kPlainShader);
    ScriptedDevice scripted(lab_.device.Get());
    {
        StereoWarpShader shader;
        ASSERT_TRUE(shader.Load(lab_.device.Get()));
        EXPECT_EQ(scripted.LivingObjects(), 2);
    }
    EXPECT_EQ(scripted.LivingObjects(), 0);
}

TEST_F(StereoWarpShaderTest, CreatesABufferOfTheInterfacesSize) {
    Write(Current(), kPlainShader);
    StereoWarpShader shader;
    ASSERT_TRUE(shader.Load(lab_.device.Get()));
    shader.Apply(lab_.context.Get(), {});
    ComPtr<ID3D11Buffer> buffer;
    lab_.context->PSGetConstantBuffers(0, 1, &buffer);
    ASSERT_TRUE(buffer);
    D3D11_BUFFER_DESC description = {};
    buffer->GetDesc(&description);
    EXPECT_EQ(description.ByteWidth, 112U);
    EXPECT_EQ(description.Usage, D3D11_USAGE_DEFAULT);
    EXPECT_EQ(description.BindFlags, UINT{D3D11_BIND_CONSTANT_BUFFER});
    EXPECT_EQ(description.CPUAccessFlags, 0U);
    EXPECT_EQ(description.MiscFlags, 0U);
    EXPECT_EQ(description.StructureByteStride, 0U);
}

TEST_F(StereoWarpShaderTest, BindsNothingBeforeItIsReady) {
    StereoWarpShader shader;
    shader.Apply(lab_.context.Get(), {});
    ComPtr<ID3D11Buffer> buffer;
    lab_.context->PSGetConstantBuffers(0, 1, &buffer);
    EXPECT_FALSE(buffer);
    Write(Current(), kPlainShader);
    ASSERT_TRUE(shader.Load(lab_.device.Get()));
    shader.Apply(nullptr, {});
}

/// Writes the shader's 28 words into a row of pixels, one each.
constexpr const char* kWordsShader = R"(
cbuffer WarpConstants : register(b0) { uint4 Words[7]; };
uint PSMain(float4 place : SV_Position) : SV_Target
{
    uint word = uint(place.x);
    return Words[word / 4][word % 4];
}
)";

constexpr const char* kFullScreenShader = R"(
float4 main(uint id : SV_VertexID) : SV_Position
{
    return float4(float((id << 1) & 2) * 2 - 1, 1 - float(id & 2) * 2, 0, 1);
}
)";

/// Draws once with what `shader` has bound and returns what it saw at b0.
std::array<std::uint32_t, 28> WordsSeen(const LabDevice& lab, const StereoWarpShader& shader,
                                        const StereoWarpArguments& arguments) {
    CD3D11_TEXTURE2D_DESC description(DXGI_FORMAT_R32_UINT, 28, 1, 1, 1, D3D11_BIND_RENDER_TARGET);
    ComPtr<ID3D11Texture2D> words;
    ComPtr<ID3D11RenderTargetView> target;
    EXPECT_EQ(lab.device->CreateTexture2D(&description, nullptr, &words), S_OK);
    EXPECT_EQ(lab.device->CreateRenderTargetView(words.Get(), nullptr, &target), S_OK);
    ComPtr<ID3DBlob> code;
    EXPECT_EQ(D3DCompile(kFullScreenShader, std::strlen(kFullScreenShader), nullptr, nullptr, nullptr, "main",
                         "vs_5_0", 0, 0, &code, nullptr),
              S_OK);
    ComPtr<ID3D11VertexShader> full_screen;
    EXPECT_EQ(lab.device->CreateVertexShader(code->GetBufferPointer(), code->GetBufferSize(), nullptr,
                                             &full_screen),
              S_OK);

    const D3D11_VIEWPORT viewport = {0, 0, 28, 1, 0, 1};
    lab.context->OMSetRenderTargets(1, target.GetAddressOf(), nullptr);
    lab.context->RSSetViewports(1, &viewport);
    lab.context->IASetPrimitiveTopology(D3D11_PRIMITIVE_TOPOLOGY_TRIANGLESTRIP);
    lab.context->VSSetShader(full_screen.Get(), nullptr, 0);
    shader.Apply(lab.context.Get(), arguments);
    lab.context->Draw(4, 0);

    std::array<std::uint32_t, 28> seen = {};
    const std::vector<std::uint32_t> read = lab.Read<std::uint32_t>(words.Get());
    std::copy(read.begin(), read.end(), seen.begin());
    return seen;
}

TEST_F(StereoWarpShaderTest, TheShaderReceivesTheComputedConstants) {
    Write(Current(), kWordsShader);
    StereoWarpShader shader;
    ASSERT_TRUE(shader.Load(lab_.device.Get())) << shader.LastError();
    shader.separation_multiplier = 1.5F;
    StereoWarpArguments arguments;
    arguments.screen_size = 3.0F;
    for (const std::uint32_t eye : {0U, 1U}) {
        for (const std::uint32_t curve_mode : {0U, 1U, 3U}) {
            arguments.eye = eye;
            arguments.curve_mode = curve_mode;
            arguments.curve_angle = 1.25F;
            const StereoWarpConstants computed =
                ComputeStereoWarpConstants(DiagSettings::Instance(), arguments, 1.5F);
            std::array<std::uint32_t, 28> expected = {};
            std::memcpy(expected.data(), &computed, sizeof(computed));
            EXPECT_EQ(WordsSeen(lab_, shader, arguments), expected)
                << "eye " << eye << " mode " << curve_mode;
        }
    }
}

}  // namespace
