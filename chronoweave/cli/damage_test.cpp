// Damaged stores on the command line: every command tells, gives what can be read, and ends with status 1.
#include <gtest/gtest.h>

#include <cerrno>

#include "chronoweave/cli/cli_testing.h"

namespace {

// A device of which some bytes can't be read.
class BadSector : public FileDevice {
  public:
    BadSector(std::unique_ptr<FileDevice> device, uint64_t at) : device_(std::move(device)), at_(at) {}
    int64_t read_at(uint64_t offset, std::span<uint8_t> bytes) override {
        if (offset <= at_ && at_ < offset + bytes.size()) {
            errno = EIO;
            return -1;
        }
        return device_->read_at(offset, bytes);
    }
    DeviceWrite write_at(uint64_t offset, std::span<const uint8_t> bytes) override {
        return device_->write_at(offset, bytes);
    }
    int truncate(uint64_t size) override { return device_->truncate(size); }
    uint64_t size() override { return device_->size(); }
    int sync() override { return device_->sync(); }

  private:
    std::unique_ptr<FileDevice> device_;
    uint64_t at_;
};

class DamagedStore : public CliTest {
  protected:
    void SetUp() override {
        CliTest::SetUp();
        for (const char* extension : {".trs", ".tri", ".trv"})
            std::filesystem::copy_file(sample() + extension, base() + extension);
        const std::string stream = content(base() + ".trs"), index = content(base() + ".tri");
        size_ = stream.size();
        const size_t records = (index.size() - 21) / 13;
        const char* record = index.data() + 20 + 13 * (records / 2);
        block_ = load_be32(reinterpret_cast<const uint8_t*>(record) + 9);
        tick_ = load_be64(reinterpret_cast<const uint8_t*>(record) + 1);
    }
    void TearDown() override { gf_WrapDevices({}); }
    std::string base() const { return path("damaged"); }

    // Every command that reads a store, the state in the middle of it.
    std::vector<Words> commands() const {
        std::vector<Words> all{{"info", base()},
                               {"events", base()},
                               {"state", base(), "--ticks", "--at", std::to_string(tick_ + 1)},
                               {"objects", base()},
                               {"search", "switch", base()},
                               {"report", "objects", base()},
                               {"report", "load", base()}};
#ifdef CW_CLI_QT
        all.push_back({"render", base(), "-o", path("picture.svg")});
#endif
        return all;
    }
    void expect_told(const std::string& words) const {
        for (const Words& command : commands()) {
            const Ran ran = run(command);
            EXPECT_EQ(ran.status, 1) << command[0] << ": " << ran.err;
            EXPECT_NE(ran.err.find(words), std::string::npos) << command[0] << ": " << ran.err;
            EXPECT_FALSE(ran.out.empty()) << command[0] << " gives what can be read";
        }
    }

    uint64_t size_ = 0, block_ = 0, tick_ = 0;
};

}  // namespace

TEST_F(DamagedStore, AWholeOneIsFine) {
    for (const Words& command : commands()) EXPECT_EQ(run(command).status, 0) << command[0];
}

TEST_F(DamagedStore, ACutStreamIsTold) {
    std::filesystem::resize_file(base() + ".trs", size_ - 20000);
    expect_told("damaged.trs, byte ");
    const std::vector<std::string> events = lines_of(run({"events", base(), "--csv"}).out);
    EXPECT_GT(events.size(), 1000u) << "all that stand ahead of the cut";
}

TEST_F(DamagedStore, AnOverwrittenBlockIsToldAndWhatFollowsIsGiven) {
    const auto whole = lines_of(run({"events", base(), "--csv"}).out);
    std::fstream stream(base() + ".trs", std::ios::in | std::ios::out | std::ios::binary);
    stream.seekp(static_cast<std::streamoff>(block_));
    stream << std::string(500, '\xE5');
    stream.close();
    expect_told("damaged.trs, byte ");
    const auto events = lines_of(run({"events", base(), "--csv"}).out);
    EXPECT_EQ(events.size(), whole.size() - 100) << "one block is missing";
    EXPECT_EQ(events.back(), whole.back());
}

TEST_F(DamagedStore, ACutIndexIsMadeAnew) {
    const auto whole = lines_of(run({"events", base(), "--csv"}).out);
    std::filesystem::resize_file(base() + ".tri", 50);
    expect_told("damaged.tri, byte 46: the index ends without an end mark");
    EXPECT_EQ(lines_of(run({"events", base(), "--csv"}).out), whole);
}

TEST_F(DamagedStore, AReadErrorIsTold) {
    gf_WrapDevices([this](std::unique_ptr<FileDevice> device, const std::string& name) {
        if (name != base() + ".trs") return device;
        return std::unique_ptr<FileDevice>(std::make_unique<BadSector>(std::move(device), block_ + 2));
    });
    expect_told("Input/output error");
}
