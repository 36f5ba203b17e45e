#include <sys/resource.h>
#include <unistd.h>

#include <csignal>

#include "chronoweave/import/import_testing.h"
#include "chronoweave/import/store_place.h"
#include "shared/libcxxutil/paths.h"

namespace {

namespace fs = std::filesystem;

class OpenSourceTest : public ImportTest {
  protected:
    static Bytes RunOf(uint32_t id) {
        Bytes bytes = short_header(true);
        put_record(bytes, raw_event(2, 1, 10, id, true));
        return bytes;
    }
    std::string NoSource(const std::string& name) const {
        return "Can't open VOREL Chronoweave source file \"" + path(name) + "\".";
    }
};

TEST_F(OpenSourceTest, refusalsAreInTheSystemsWords) {
    fs::create_directory(path("folder.trr"));
    fs::create_directory(path("dotted.d"));
    Bytes other = short_header(true, 2), wrongOs = long_header(true, 2, 1, 7);
    write("run.TRR", RunOf(1));
    write("run.CORE", RunOf(1));
    write("empty.trr", {});
    write("other.trr", other);
    write("other2.trr", wrongOs);
    write("marker.trr", {2, 1, 0, 0});
    const struct {
        const char* name;
        std::string error;
    } cases[] = {
        {"gone.trr", "Cannot open TRR file.\n" + path("gone.trr") + ": No such file or directory"},
        {"folder.trr", "Cannot open TRR file.\n" + path("folder.trr") + ": Is a directory"},
        {"gone.core",
         "error opening core file, command failed.\n" + path("gone.core") + ": No such file or directory"},
        {"run.TRR", "Cannot open file."},
        {"run.CORE", "Cannot open file."},
        {"empty.trr", "Bad format TRR file."},
        {"marker.trr", "Bad format TRR file."},
        {"other.trr", "Unsupported OS or Architecture."},
        {"other2.trr", "Unsupported OS or Architecture."},
    };
    for (const auto& c : cases) {
        const OpenedSource source = import_OpenSource(path(c.name), {});
        EXPECT_FALSE(source.store) << c.name;
        EXPECT_FALSE(source.imported) << c.name;
        EXPECT_EQ(source.trouble.text(), c.error + "\n" + NoSource(c.name)) << c.name;
    }
    EXPECT_EQ(import_OpenSource("", {}).trouble.text(), "Invalid file name.");
    for (const char* name : {"gone", "gone.trs", "dotted.d/gone"}) {
        const std::string error = import_OpenSource(path(name), {}).trouble.text();
        EXPECT_NE(error.find("gone.tr"), std::string::npos) << error;
        EXPECT_NE(error.find(NoSource(name)), std::string::npos) << error;
    }
}

TEST_F(OpenSourceTest, aSourceLeavesItsStoreBesideItAndTheStoreOpensByEveryName) {
    OpenedSource source = import("run.v2.trr", RunOf(0x11));
    EXPECT_EQ(source.trouble.text(), "");
    EXPECT_TRUE(source.imported);
    EXPECT_FALSE(source.inCache);
    EXPECT_EQ(source.base, path("run.v2"));
    EXPECT_EQ(source.counts.events, 1u);
    for (const char* name : {"run.v2.trs", "run.v2"}) {
        source = import_OpenSource(path(name), {});
        ASSERT_TRUE(source.store) << name << source.trouble.text();
        EXPECT_FALSE(source.imported);
        EXPECT_EQ(source.base, path("run.v2")) << name;
        EXPECT_EQ(events(*source.store), "0:2/1:11");
    }
    // A further import replaces it, even while a reader has it open.
    source = import("run.v2.trr", RunOf(0x22));
    EXPECT_EQ(events(*source.store), "0:2/1:22");
}

TEST_F(OpenSourceTest, aCoreUnderARawNameGoesTheCoreWay) {
    Bytes core{0, 2, 0, 1};
    for (const uint32_t value : {0u, 0u, 0u, 250u}) put32(core, value, true);
    append(core, task_entry(7, 1, "main", true, true));
    const OpenedSource source = import("run.trr", core);
    EXPECT_EQ(source.trouble.text(), "");
    EXPECT_STREQ(mt_GetOsName(source.store.get()), "TOLMUND");
    EXPECT_EQ(events(*source.store), "0:6/10:7");
}

TEST_F(OpenSourceTest, aFailedImportShowsNoEarlierStore) {
    import("run.core", RunOf(1));
    ASSERT_TRUE(import("run.trr", RunOf(1)).store);
    const OpenedSource source = import("run.core", {0, 9, 1});
    EXPECT_FALSE(source.store);
    EXPECT_EQ(source.trouble.text(), "Unknown core file version: 9");
    EXPECT_TRUE(import_OpenSource(path("run"), {}).store);
}

TEST_F(OpenSourceTest, aFolderThatCannotBeWrittenLeadsToTheCache) {
    setenv("XDG_CACHE_HOME", path("cache").c_str(), 1);
    // A folder where nobody, root included, can make a file.
    ImportOptions options;
    options.outputBase = "/proc/self/run";
    const OpenedSource source = import_OpenSource(write("run.trr", RunOf(5)), options);
    StorePlace other;
    EXPECT_TRUE(store_ChoosePlace("x", "/proc/run", other).ok());
    unsetenv("XDG_CACHE_HOME");
    ASSERT_TRUE(source.store) << source.trouble.text();
    EXPECT_TRUE(source.inCache);
    EXPECT_EQ(path_directory(source.base), path("cache/chronoweave"));
    EXPECT_EQ(path_file(source.base).substr(0, 3), "run");
    EXPECT_NE(other.base, source.base);
}

TEST_F(OpenSourceTest, aFolderThatDoesNotExistIsNamed) {
    ImportOptions options;
    options.outputBase = path("no/folder/run");
    const OpenedSource source = import_OpenSource(write("run.trr", RunOf(5)), options);
    EXPECT_FALSE(source.store);
    EXPECT_EQ(source.trouble.text().substr(0, source.trouble.text().find('\n')),
              "The folder \"" + path("no/folder") + "\" for the store does not exist.");
}

TEST_F(OpenSourceTest, theSourceIsNeverOverwritten) {
    const Bytes bytes = RunOf(5);
    write("data.trs", bytes);
    fs::create_symlink(path("data.trs"), path("data.trr"));
    const OpenedSource source = import_OpenSource(path("data.trr"), {});
    EXPECT_FALSE(source.store);
    EXPECT_EQ(source.trouble.text().substr(0, source.trouble.text().find('\n')),
              "The store's file \"" + path("data.trs") + "\" is the source itself.");
    EXPECT_EQ(fs::file_size(path("data.trs")), bytes.size());
}

TEST_F(OpenSourceTest, eventsThatDoNotFitTheDiskAreCountedAndTheRestIsShown) {
    Bytes bytes = short_header(true);
    for (uint32_t i = 0; i < 3000; ++i) put_record(bytes, raw_event(2, 1, 1 + i, 1, true));
    const std::string name = write("run.trr", bytes);
    // A limit on the size of files stands in for the full disk.
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    rlimit small = before;
    small.rlim_cur = 50000;
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const OpenedSource source = import_OpenSource(name, {});
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
    ASSERT_TRUE(source.store) << source.trouble.text();
    EXPECT_GT(source.counts.events, 1000u);
    EXPECT_EQ(source.counts.events + source.counts.refused, 3000u);
    EXPECT_EQ(mt_GetEventCount(*source.store), source.counts.events);
    const auto last = static_cast<double>(source.counts.events - 1) / 1000;
    EXPECT_EQ(source.trouble.text(),
              gen_format("%llu events could not be taken into the store, which ends at %.3f s: %s.trs: "
                         "File too large",
                         static_cast<unsigned long long>(source.counts.refused), last, path("run").c_str()));
}

}  // namespace
