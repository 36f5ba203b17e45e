// The window program as a service and as a plug-in, each in a process of its own without a display.
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <filesystem>

#include "services/servicerouter_proxy/plugin_frame.h"
#include "shared/libcxxutil/byte_pipe.h"
#include "shared/libcxxutil/captured_run.h"
#include "shared/libcxxutil/files.h"
#include "shared/stp_transport/socket_wire.h"
#include "shared/stp_transport/sockets.h"

namespace {

using namespace std::chrono_literals;

bool has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

std::vector<std::string> environment(const std::filesystem::path& folder) {
    // The platform without a display remarks on much.
    return {"QT_QPA_PLATFORM=offscreen", "QT_LOGGING_RULES=*=false", "XDG_RUNTIME_DIR=" + folder.string(),
            "XDG_CONFIG_HOME=" + (folder / "config").string(),
            "XDG_CACHE_HOME=" + (folder / "cache").string()};
}

// A folder with a trace, and the programs run there.
struct Programs : testing::Test {
    std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("cw_service_" + std::to_string(::getpid()));
    std::string trace = folder / "a trace.trr";

    void SetUp() override {
        std::filesystem::create_directories(folder);
        std::filesystem::permissions(folder, std::filesystem::perms::owner_all);
        std::filesystem::copy_file(CW_SOURCE_DIR "/samples/build-2cpu.trr", trace);
    }
    void TearDown() override { std::filesystem::remove_all(folder); }
    std::string remote(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), CW_REMOTE);
        const CapturedRun run = run_Captured({.arguments = arguments, .environment = environment(folder)},
                                             100000, [] { return true; });
        std::string printed;
        // The window program that is started says what it finds lacking in its platform.
        for (std::string_view left = run.printed, line; text_next_line(left, line);)
            if (!has(std::string(line), "plugin")) printed += std::string(line) + '\n';
        return printed + "[" + std::to_string(run.end ? run.end->number : -1) + "]";
    }
    // So often is asked until the answer is this.
    bool becomes(const std::vector<std::string>& arguments, const std::string& answer) {
        for (int i = 0; i < 100; ++i)
            if (remote(arguments) == answer) return true;
        return false;
    }
};

}  // namespace

TEST_F(Programs, WindowsAreOpenedScrolledListedAndClosedFromOutside) {
    EXPECT_EQ(remote({"list"}), "[0]");
    EXPECT_EQ(remote({"open", trace, "--time", "0.01", "--timeout", "60"}), "[0]");
    EXPECT_TRUE(has(remote({"list"}), trace));
    EXPECT_EQ(remote({"open", trace}), "[0]");
    EXPECT_EQ(remote({"open", trace, "--new", "--title", "Second"}), "[0]");
    const std::string two = remote({"list", "--json"});
    EXPECT_EQ(std::count(two.begin(), two.end(), '\n'), 2) << two;
    EXPECT_TRUE(has(two, "\"title\": \"Second\"")) << two;
    EXPECT_EQ(remote({"close", trace}), "[0]") << "both windows of the file";
    EXPECT_TRUE(becomes({"list"}, "[0]")) << "the program ends with its last window, and the router with it";
}

TEST_F(Programs, ARouterThatCannotBeReachedEndsTheProgram) {
    const CapturedRun run = run_Captured(
        {.arguments = {CW_TRVGUI, "-connect_servicerouter", "1"}, .environment = environment(folder)}, 10000,
        [] { return true; });
    ASSERT_TRUE(run.end);
    EXPECT_EQ(run.end->number, 1);
    EXPECT_TRUE(has(run.printed, "Unable to connect to a running or launch a new servicerouter.\n"))
        << run.printed;
    EXPECT_TRUE(has(run.printed, "Warning: Unable to start IDE framework (svc_router).  Exiting."))
        << run.printed;
}

TEST_F(Programs, APlugInAsksItsHostFirstAndAnswersIt) {
    STPStatus status;
    const FileDescriptor listening = socket_Listen(0, ListenOn::Loopback, status);
    ASSERT_TRUE(listening.IsOpen());
    ChildProcess program;
    ASSERT_TRUE(
        program.start({.arguments = {CW_TRVGUI, "--plugin", std::to_string(*socket_Port(listening.number()))},
                       .environment = environment(folder)}));
    pollfd entry{listening.number(), POLLIN, 0};
    ASSERT_EQ(::poll(&entry, 1, 60000), 1);
    SocketWire wire(socket_Accept(listening.number(), status));
    const auto read = [&] {
        std::string bytes;
        while (true) {
            const auto frame =
                pluginFrame_Read({reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()});
            if (frame.state != PluginFrameRead::State::Incomplete) return frame.frame;
            if (!wire.wait({.input = true}, 60s).input) return PluginFrame{};
            uint8_t piece[256];
            const WireMoved moved = wire.read(piece);
            if (moved.what == Moved::End || moved.what == Moved::Failed) return PluginFrame{};
            bytes.append(piece, piece + moved.bytes);
        }
    };
    const auto send = [&](const PluginFrame& frame) {
        const std::string bytes = pluginFrame_Write(frame).value();
        wire.write({reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()});
    };
    EXPECT_EQ(read(), (PluginFrame{PluginFrame::Type::Request, 0, 0, ";"}));
    send({PluginFrame::Type::Reply, 0, 1, ""});
    send({PluginFrame::Type::Request, 0, 0, "what"});
    EXPECT_EQ(read(), (PluginFrame{PluginFrame::Type::Reply, 0, 0, "Unknown request:what"}));
    EXPECT_TRUE(program.IsRunning());
}
