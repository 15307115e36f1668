#include "transcript/Recorder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <exception>
#include <filesystem>
#include <fstream>
#include <ios>
#include <iterator>
#include <random>
#include <string>
#include <system_error>
#include <tuple>
#include <vector>

#ifndef _WIN32
#include <sys/resource.h>
#endif

namespace emulator {

namespace {

namespace fs = std::filesystem;

class RecorderTests : public testing::Test {
 protected:
    RecorderTests() {
        fs::remove_all(folder);
        fs::create_directories(folder);
    }
    ~RecorderTests() override {
        std::error_code ignored;
        fs::remove_all(folder, ignored);
    }

    void Put(const std::string& text) const { std::ofstream(file, std::ios::binary) << text; }

    std::string Text() const {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    void Record(RecordMode mode, const std::string& command) {
        Recorder(file, mode, [this](const std::string& sentence) {
            troubles.push_back(sentence);
        }).Add({1.0, command, {}, 0});
    }

    std::string Complaint(RecordMode mode) {
        try {
            Record(mode, "x");
            return "";
        } catch (const std::exception& error) {
            return error.what();
        }
    }

    std::vector<std::string> troubles;
    fs::path folder = fs::temp_directory_path() /
                      ("oko record " + std::string(testing::UnitTest::GetInstance()->current_test_info()->name()) +
                       " " + std::to_string(std::random_device{}()));
    fs::path file = folder / "run.txt";
};

TEST_F(RecorderTests, RecordThatIsThere_IsNotOverwrittenUnasked) {
    Put("precious\n");
    const std::string complaint = Complaint(RecordMode::Refuse);
    EXPECT_NE(complaint.find("run.txt"), std::string::npos) << complaint;
    EXPECT_NE(complaint.find("--overwrite"), std::string::npos) << complaint;
    EXPECT_NE(complaint.find("--append"), std::string::npos) << complaint;
    EXPECT_EQ(Text(), "precious\n");
}

TEST_F(RecorderTests, NewAndEmptyFiles_AreWrittenInEveryMode) {
    for (const RecordMode mode : {RecordMode::Refuse, RecordMode::Overwrite, RecordMode::Append}) {
        Record(mode, "x");
        EXPECT_EQ(Text(), "1.000\tx\t-\n");
        Put("");
        Record(mode, "y");
        EXPECT_EQ(Text(), "1.000\ty\t-\n");
        fs::remove(file);
    }
}

TEST_F(RecorderTests, Overwrite_LeavesNothingOfTheOldRecord) {
    Put("0\ta\tb\n0\ta\tb\n0\ta\tb\n");
    Record(RecordMode::Overwrite, "x");
    EXPECT_EQ(Text(), "1.000\tx\t-\n");
}

TEST_F(RecorderTests, Append_GoesOnBehindTheLastLine) {
    Put("0\ta\tb\n");
    Record(RecordMode::Append, "x");
    EXPECT_EQ(Text(), "0\ta\tb\n1.000\tx\t-\n");
    Put("0\ta\tb");  // whose writer crashed
    Record(RecordMode::Append, "x");
    EXPECT_EQ(Text(), "0\ta\tb\n1.000\tx\t-\n");
}

TEST_F(RecorderTests, FolderThatIsNotThere_IsRefused) {
    file = folder / "none" / "run.txt";
    EXPECT_NE(Complaint(RecordMode::Refuse).find("run.txt"), std::string::npos);
}

TEST_F(RecorderTests, Lines_WaitForTheFlush) {
    Recorder recorder(file, RecordMode::Refuse, {});
    recorder.Add({1.0, "x", {}, 0});
    recorder.Add({2.0, "y", {}, 0});
    EXPECT_EQ(Text(), "");
    recorder.Flush();
    EXPECT_EQ(Text(), "1.000\tx\t-\n2.000\ty\t-\n");
    recorder.Flush();
    EXPECT_EQ(Text(), "1.000\tx\t-\n2.000\ty\t-\n");
}

TEST_F(RecorderTests, ManyLines_DoNotFillTheMemory) {
    Recorder recorder(file, RecordMode::Refuse, {});
    const std::string command(60'000, 'x');
    for (int i = 0; i < 50; ++i) {
        recorder.Add({1.0, command, {}, 0});
    }
    EXPECT_GT(fs::file_size(file), 2'000'000U);
}

#ifdef __linux__
TEST_F(RecorderTests, FullDisk_IsSaidOnceAndEndsNothing) {
    Recorder recorder("/dev/full", RecordMode::Refuse, [this](const std::string& text) { troubles.push_back(text); });
    for (int i = 0; i < 3; ++i) {
        recorder.Add({1.0, "x", {}, 0});
        recorder.Flush();
    }
    ASSERT_EQ(troubles.size(), 1U);
    EXPECT_EQ(troubles[0], "the record /dev/full ends here: No space left on device");
}
#endif

#ifndef _WIN32
/// No file grows beyond so many bytes while this lives, as on a disk that is full.
class SmallDisk {
 public:
    explicit SmallDisk(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit limit{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SmallDisk() {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::ignore = std::signal(SIGXFSZ, m_handler);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

 private:
    rlimit m_before{};
    void (*m_handler)(int);
};

TEST_F(RecorderTests, FullDisk_LeavesWhatIsReadable) {
    Put("0\ta\tb\n");
    {
        const SmallDisk disk(20);
        Recorder recorder(file, RecordMode::Append,
                          [this](const std::string& sentence) { troubles.push_back(sentence); });
        for (int i = 0; i < 3; ++i) {
            recorder.Add({1.0, "x", {}, 0});
            recorder.Flush();
        }
    }
    EXPECT_EQ(Text(), "0\ta\tb\n1.000\tx\t-\n");
    EXPECT_EQ(troubles.size(), 1U);
}
#endif

TEST_F(RecorderTests, ReplayAndRecordOfOneFile_AreTold) {
    Put("x");
    fs::create_directories(folder / "sub");
    EXPECT_TRUE(IsSameFile(file, file));
    EXPECT_TRUE(IsSameFile(file, folder / "sub" / ".." / "run.txt"));
    EXPECT_FALSE(IsSameFile(file, folder / "other.txt"));
    EXPECT_TRUE(IsSameFile(folder / "new.txt", folder / "sub" / ".." / "new.txt"));
    EXPECT_FALSE(IsSameFile(folder / "new.txt", folder / "newer.txt"));
    fs::create_hard_link(file, folder / "link.txt");
    EXPECT_TRUE(IsSameFile(file, folder / "link.txt"));
}

}  // namespace

}  // namespace emulator
