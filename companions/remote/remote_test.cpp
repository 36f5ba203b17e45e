// The remote control as a process, with a router and a program that serves windows beside it.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <thread>

#include "companions/remote/remote_options.h"
#include "services/generated/tra_service_server_impl.h"
#include "services/servicerouter_proxy/proxy.h"
#include "shared/libcxxutil/captured_run.h"
#include "shared/libcxxutil/event_loop.h"

namespace {

using namespace std::chrono_literals;

// Writes down what it is asked, and asks its client back when a file is opened.
struct Server : TRA_server_Impl {
    std::vector<std::string>& calls;
    explicit Server(std::vector<std::string>& list) : calls(list) {}

  protected:
    TRA_OpenFile_Reply OpenFile(const TRA_OpenFile_Request& request) override {
        calls.push_back("open " + request.dataFile + " " + request.title + std::to_string(request.newWin) +
                        std::to_string(request.reload) + std::to_string(request.raiseWin));
        if (request.dataFile.ends_with("none.trr")) return {};
        const auto can = CheckAbility({request.dataFile});
        calls.push_back("can " + std::to_string(can ? can->powerMmask : 0));
        RunCmdInDebugger({request.dataFile, "attach 0x10", 16, "0.5", 4});
        ShowPositionInDebugger({request.dataFile, 16, "0.5", 0x401136});
        return {.win = 77};
    }
    TRA_ScrollToPosition_Reply ScrollToPosition(const TRA_ScrollToPosition_Request& request) override {
        calls.push_back("scroll " + request.dataFile + " " + std::to_string(request.oid) + "@" +
                        request.time);
        return {.win = 77};
    }
    void CloseFile(const TRA_CloseFile_Request& request) override {
        calls.push_back("close " + request.dataFile);
    }
};

struct Factory : ServiceFactory {
    std::vector<std::string> calls;
    Factory() : ServiceFactory("TRA") {}
    Ref<STPSpecClass> create(const ServiceRequest& request) override {
        const auto server = ref_Make<Server>(calls);
        server->attach(request.transport, request.localId, request.remoteId);
        return Ref<STPSpecClass>(server.get());
    }
};

// A router of the test's own and a program that serves there.
struct Windows : testing::Test {
    std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("cw_remote_" + std::to_string(::getpid()));
    EventLoop loop;
    Factory factory;
    Ref<ServiceRouter_Proxy> proxy;
    bool serves = true;

    void SetUp() override {
        std::filesystem::create_directories(folder);
        ::setenv("XDG_RUNTIME_DIR", folder.c_str(), 1);
        ServiceRouterOptions options;
        options.directory = std::filesystem::path(CW_SVC_ROUTER).parent_path();
        proxy = ref_Make<ServiceRouter_Proxy>(options, ServiceRouterHooks{&loop.watches, &loop.tasks});
        proxy->offer(factory);
        proxy->names().set("TRA.windows", "0x4d\t/tmp/a b.trr\tTitle\n0x4e\t\t\n");
        ASSERT_TRUE(proxy->join(ServiceRouter_Proxy::WithoutRouter::Start));
    }
    void TearDown() override {
        proxy->leave();
        std::filesystem::remove_all(folder);
    }
    // Runs the program while the loop serves; its output and its exit status in brackets.
    std::string remote(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), CW_REMOTE);
        const CapturedRun run = run_Captured({.arguments = arguments}, 10000, [&] {
            if (serves) loop.round(5ms);
            return true;
        });
        return run.printed + "[" + std::to_string(run.end ? run.end->number : -1) + "]";
    }
    std::vector<std::string> take() { return std::exchange(factory.calls, {}); }
};

using Texts = std::vector<std::string>;

}  // namespace

TEST_F(Windows, AreOpenedScrolledClosedAndListed) {
    EXPECT_EQ(remote({"open", "/tmp/x/../a.trr", "--time", "0.25", "--object", "0x10", "--title", "T",
                      "--new", "--abilities", "6"}),
              "command attach 0x10\nposition /tmp/a.trr object 0x10 time 0.5 pc 0x401136\n[0]");
    EXPECT_EQ(take(), (Texts{"open /tmp/a.trr T101", "can 6", "scroll /tmp/a.trr 16@0.25"}));
    EXPECT_EQ(
        remote({"open", "/tmp/a.trr", "--json", "--reload"}),
        "{\"asked\": \"command\", \"command\": \"attach 0x10\", \"file\": \"/tmp/a.trr\", \"time\": \"0.5\", "
        "\"object\": 16, \"pc\": 4}\n"
        "{\"asked\": \"position\", \"file\": \"/tmp/a.trr\", \"time\": \"0.5\", \"object\": 16, \"pc\": "
        "4198710}\n{\"file\": \"/tmp/a.trr\", \"window\": 77}\n[0]");
    EXPECT_EQ(take(), (Texts{"open /tmp/a.trr 011", "can 7"}));
    EXPECT_EQ(remote({"close", "/tmp/a.trr"}), "[0]");
    EXPECT_EQ(take()[0], "close /tmp/a.trr");
    EXPECT_EQ(remote({"list"}), "0x4d  /tmp/a b.trr\n0x4e  -\n[0]");
    EXPECT_EQ(remote({"list", "--json"}),
              "{\"file\": \"/tmp/a b.trr\", \"title\": \"Title\", \"window\": 77}\n"
              "{\"file\": \"\", \"title\": \"\", \"window\": 78}\n[0]");
    EXPECT_EQ(remote({"open", "/tmp/none.trr"}),
              "chronoweave-remote: error: /tmp/none.trr: no window could be opened\n[1]");
}

TEST_F(Windows, ABusyOneIsToldAsSuch) {
    serves = false;
    EXPECT_EQ(remote({"list", "--timeout", "0.2"}),
              "chronoweave-remote: error: The window is busy: it did not answer within 0.2 seconds.\n[1]");
}

TEST(RemoteOptions, MistakesAreTold) {
    const struct {
        std::vector<std::string> arguments;
        const char* problem;
    } rows[] = {
        {{}, "a command is missing: open, close or list"},
        {{"shut"}, "shut: no such command"},
        {{"open"}, "open: one file is needed"},
        {{"close", "a", "b"}, "close: one file is needed"},
        {{"list", "a"}, "list: nothing stands behind it"},
        {{"open", "a", "--time", "soon"}, "--time: no time in seconds: soon"},
        {{"open", "a", "--object", "3"}, "--object needs --time"},
        {{"open", "a", "--object", "x"}, "--object: no number of an object or of abilities: x"},
        {{"list", "--timeout", "0"}, "--timeout: no number of seconds above 0: 0"},
        {{"list", "--what", "x"}, "--what: no such option"},
        {{"list", "--timeout"}, "--timeout: no such option, or its argument is missing"},
        {{"list", "--json", "-sr_zone", "z"}, ""},
    };
    for (const auto& row : rows) {
        RemoteOptions options;
        EXPECT_EQ(remoteOptions_Parse(row.arguments, options).text(), row.problem);
    }
}
