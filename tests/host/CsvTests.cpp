// The log of a watch: what is written is read again, whatever happened to the program or the disk in between.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <ios>
#include <iterator>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "keep/CsvFormat.h"
#include "keep/CsvLog.h"
#include "keep/CsvReader.h"
#include "model/ChannelInfo.h"
#include "model/Event.h"
#include "model/Reading.h"
#include "model/Snapshot.h"
#include "platform/GrowingFile.h"

namespace {

namespace fs = std::filesystem;

constexpr std::int64_t kEvening = 1'795'297'200'000;  // 2026-11-21T21:40:00.000Z

Snapshot MakeSnapshot() {
    Snapshot snapshot;
    snapshot.when = {kEvening + 123, 1.25};
    snapshot.device = {"OKO-Lab bold line Simulator", true, std::nullopt};
    snapshot.channels = {
        {ChannelKind::Temperature, 0, "H301-T", "H301-T", true, 25.0, 60.0, 0.5, 0.25},
        {ChannelKind::Gas, 0, "CO2, \"wet\"", "gas:CO2, \"wet\"", true, 0.0, 20.0, 0.5, 0.5},
        {ChannelKind::Humidity, 1, "Room", "Room", false, 0.0, 0.0, 0.0, 0.0},
    };
    snapshot.statuses.resize(3);
    snapshot.statuses[0].reading = {37.1, 37.5, ChannelState::Below, false};
    snapshot.statuses[1].reading = {0.1 + 0.2, 5.0, ChannelState::Above, false};
    snapshot.statuses[2].reading = {std::nullopt, std::nullopt, ChannelState::NoAnswer, false};
    return snapshot;
}

Event MakeEvent(const std::string& text, EventKind kind = EventKind::Log) {
    return {7, {kEvening + 500, 1.5}, kind, "gas:CO2, \"wet\"", text};
}

std::string Content(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void Append(const fs::path& file, const std::string& text) { std::ofstream(file, std::ios::app) << text; }

/// The sentence of the error that a call ends in; empty when it ends in none.
template <typename Call>
std::string ErrorOf(Call call) {
    try {
        call();
    } catch (const CsvError& error) {
        return error.what();
    } catch (const FileError& error) {
        return error.what();
    }
    return "";
}

class CsvLogs : public testing::Test {
 protected:
    void SetUp() override {
        const std::string name = testing::UnitTest::GetInstance()->current_test_info()->name();
        folder = fs::temp_directory_path() / ("oko-csv-" + name + std::to_string(getpid()));
        fs::create_directory(folder);
        file = folder / "run.csv";
    }
    void TearDown() override { fs::remove_all(folder); }

    void WriteLog(const std::vector<std::string>& eventTexts, CsvLog::IfThere ifThere = CsvLog::IfThere::Refuse) {
        CsvLog log(file, snapshot, ifThere);
        EXPECT_FALSE(log.AddSample(snapshot));
        for (const std::string& text : eventTexts) {
            EXPECT_FALSE(log.AddEvent(MakeEvent(text)));
        }
    }

    std::string AppendError() {
        return ErrorOf([this] { const CsvLog log(file, snapshot, CsvLog::IfThere::Append); });
    }

    fs::path folder;
    fs::path file;
    Snapshot snapshot = MakeSnapshot();
};

TEST_F(CsvLogs, FileSaysWhatItIsAndHasARowForEachRoundAndEvent) {
    WriteLog({"a \"line\", of\nthe library"});
    EXPECT_EQ(
        Content(file),
        "# oko-host log 1\n"
        "# device: OKO-Lab bold line Simulator\n"
        "# simulated: yes\n"
        "# port: -\n"
        "# interval: 1\n"
        "# channel: H301-T,H301-T,temperature,0,\u00B0C,25,60,0.5,0.25,1\n"
        "# channel: \"gas:CO2, \"\"wet\"\"\",\"CO2, \"\"wet\"\"\",gas,0,%,0,20,0.5,0.5,1\n"
        "# channel: Room,Room,humidity,1,%,0,0,0,0,0\n"
        "time,seconds,row,subject,text,H301-T current [\u00B0C],H301-T target [\u00B0C],H301-T state,H301-T valid,"
        "\"gas:CO2, \"\"wet\"\" current [%]\",\"gas:CO2, \"\"wet\"\" target [%]\","
        "\"gas:CO2, \"\"wet\"\" state\",\"gas:CO2, \"\"wet\"\" valid\","
        "Room current [%],Room target [%],Room state,Room valid\n"
        "2026-11-21T21:40:00.123Z,1.250,sample,,,37.1,37.5,heating,1,0.30000000000000004,5,above,1,,,no answer,0\n"
        "2026-11-21T21:40:00.500Z,1.500,log,\"gas:CO2, \"\"wet\"\"\",\"a \"\"line\"\", of the "
        "library\",,,,,,,,,,,,\n");
}

TEST_F(CsvLogs, WhatIsWrittenIsReadAgain) {
    WriteLog({"a \"line\", of\nthe library"});
    const Log log = ReadCsv(file);
    EXPECT_EQ(log.header.device.name, snapshot.device.name);
    EXPECT_TRUE(log.header.device.simulated);
    EXPECT_EQ(log.header.device.port, std::nullopt);
    EXPECT_EQ(log.header.intervalSeconds, 1.0);
    EXPECT_EQ(FormatLogHeader(log.header), FormatLogHeader({snapshot.device, 1.0, snapshot.channels}));
    EXPECT_EQ(log.timeMs, std::vector<std::int64_t>{kEvening + 123});
    ASSERT_EQ(log.columns.size(), 3U);
    EXPECT_EQ(log.columns[0].current, std::vector<double>{37.1});
    EXPECT_EQ(log.columns[1].current, std::vector<double>{0.1 + 0.2});
    EXPECT_EQ(log.columns[1].target, std::vector<double>{5.0});
    EXPECT_TRUE(std::isnan(log.columns[2].current[0]));
    EXPECT_TRUE(std::isnan(log.columns[2].target[0]));
    EXPECT_EQ(log.columns[0].state, std::vector<ChannelState>{ChannelState::Below});
    EXPECT_EQ(log.columns[2].state, std::vector<ChannelState>{ChannelState::NoAnswer});
    ASSERT_EQ(log.events.size(), 1U);
    EXPECT_EQ(log.events[0].id, 1U);
    EXPECT_EQ(log.events[0].when.utcMs, kEvening + 500);
    EXPECT_EQ(log.events[0].when.seconds, 1.5);
    EXPECT_EQ(log.events[0].kind, EventKind::Log);
    EXPECT_EQ(log.events[0].channel, "gas:CO2, \"wet\"");
    EXPECT_EQ(log.events[0].text, "a \"line\", of the library");
    EXPECT_TRUE(log.torn.empty());
}

TEST_F(CsvLogs, PortAndEveryKindOfEventAreKept) {
    snapshot.device = {"OKO-Lab bold line", false, 3};
    {
        CsvLog log(file, snapshot, CsvLog::IfThere::Refuse);
        for (int kind = 0; kind <= static_cast<int>(EventKind::Trouble); ++kind) {
            EXPECT_FALSE(log.AddEvent(MakeEvent("x", static_cast<EventKind>(kind))));
        }
    }
    const Log log = ReadCsv(file);
    EXPECT_FALSE(log.header.device.simulated);
    EXPECT_EQ(log.header.device.port, 3);
    ASSERT_EQ(log.events.size(), 11U);
    EXPECT_EQ(log.events[10].kind, EventKind::Trouble);
}

TEST_F(CsvLogs, EachRowIsTheSystemsAtOnce) {
    CsvLog log(file, snapshot, CsvLog::IfThere::Refuse);
    EXPECT_EQ(ReadCsv(file).timeMs.size(), 0U);
    for (std::size_t rows = 1; rows < 4; ++rows) {
        log.AddSample(snapshot);
        EXPECT_EQ(ReadCsv(file).timeMs.size(), rows);
        log.AddEvent(MakeEvent("x"));
        EXPECT_EQ(ReadCsv(file).events.size(), rows);
    }
}

TEST_F(CsvLogs, ValueThatIsNoNumberIsNoValue) {
    snapshot.statuses[0].reading.current = std::numeric_limits<double>::quiet_NaN();
    snapshot.statuses[1].reading.current = std::numeric_limits<double>::infinity();
    WriteLog({});
    const Log log = ReadCsv(file);
    EXPECT_TRUE(std::isnan(log.columns[0].current[0]));
    EXPECT_TRUE(std::isnan(log.columns[1].current[0]));
    EXPECT_NE(Content(file).find(",sample,,,,37.5,heating,0,,5,above,0,"), std::string::npos);
}

TEST_F(CsvLogs, ExistingFileIsRefusedAndLeftAsItIs) {
    Append(file, "somebody's notes\n");
    const std::string error = ErrorOf([this] { WriteLog({}); });
    EXPECT_NE(error.find("run.csv is there already: name another file, or --append"), std::string::npos) << error;
    EXPECT_EQ(Content(file), "somebody's notes\n");
}

TEST_F(CsvLogs, FolderThatIsNotThereIsSaid) {
    file = folder / "nowhere" / "run.csv";
    const std::string error = ErrorOf([this] { WriteLog({}); });
    EXPECT_NE(error.find("nowhere/run.csv: No such file or directory"), std::string::npos) << error;
}

TEST_F(CsvLogs, AppendingGoesOnWithoutASecondHeader) {
    WriteLog({"one"});
    const std::string before = Content(file);
    WriteLog({"two"}, CsvLog::IfThere::Append);
    EXPECT_TRUE(Content(file).starts_with(before));
    const Log log = ReadCsv(file);
    EXPECT_EQ(log.timeMs.size(), 2U);
    EXPECT_EQ(log.events.size(), 2U);
    EXPECT_TRUE(log.torn.empty());
}

TEST_F(CsvLogs, AppendingToNothingBegins) {
    WriteLog({}, CsvLog::IfThere::Append);
    EXPECT_EQ(ReadCsv(file).timeMs.size(), 1U);
    fs::resize_file(file, 0);
    WriteLog({}, CsvLog::IfThere::Append);
    EXPECT_EQ(ReadCsv(file).timeMs.size(), 1U);
}

TEST_F(CsvLogs, AppendingToAnotherWatchIsRefused) {
    WriteLog({"one"});
    const std::string before = Content(file);
    const Snapshot same = snapshot;
    snapshot.device.name = "another";
    EXPECT_NE(AppendError().find("of another device, OKO-Lab bold line Simulator"), std::string::npos);
    snapshot = same;
    snapshot.device.port = 4;
    EXPECT_NE(AppendError().find("another device"), std::string::npos);
    snapshot = same;
    snapshot.channels.pop_back();
    EXPECT_NE(AppendError().find("channels are others"), std::string::npos);
    snapshot = same;
    snapshot.channels[0].above = 1.0;
    EXPECT_NE(AppendError().find("tolerances of H301-T were others"), std::string::npos);
    snapshot = same;
    snapshot.intervalSeconds = 2.0;
    EXPECT_NE(AppendError().find("interval"), std::string::npos);
    EXPECT_EQ(Content(file), before);
}

TEST_F(CsvLogs, AppendingToWhatIsNoLogIsRefused) {
    Append(file, "time,value\n1,2\n");
    EXPECT_EQ(AppendError(), "run.csv, line 1: this is no log of oko-host");
    EXPECT_EQ(Content(file), "time,value\n1,2\n");
}

TEST_F(CsvLogs, TornLastRowIsSkippedWhereverItWasTorn) {
    WriteLog({"first", "a \"quoted\", text"});
    const std::string whole = Content(file);
    const std::size_t header = FormatLogHeader({snapshot.device, 1.0, snapshot.channels}).size();
    for (std::size_t length = header; length < whole.size(); ++length) {
        const Log log = ParseCsv(whole.substr(0, length), "run.csv");
        const std::size_t rows = log.timeMs.size() + log.events.size();
        const auto breaks = std::count(whole.begin() + static_cast<std::ptrdiff_t>(header),
                                       whole.begin() + static_cast<std::ptrdiff_t>(length), '\n');
        // A row that lacks nothing but its line break is whole.
        const bool lacksBreak = whole[length] == '\n';
        ASSERT_EQ(rows, static_cast<std::size_t>(breaks) + (lacksBreak ? 1 : 0)) << whole.substr(0, length);
        ASSERT_EQ(log.torn.size(), lacksBreak || whole[length - 1] == '\n' ? 0U : 1U) << whole.substr(0, length);
    }
}

TEST_F(CsvLogs, AppendingEndsATornRowFirst) {
    WriteLog({"first", "a \"quoted\", text"});
    const std::string whole = Content(file);
    const std::size_t header = FormatLogHeader({snapshot.device, 1.0, snapshot.channels}).size();
    const std::size_t complete = ParseCsv(whole, "").events.size() + 1;
    for (std::size_t length = header; length < whole.size(); ++length) {
        std::ofstream(file, std::ios::binary) << whole.substr(0, length);
        const Log before = ReadCsv(file);
        WriteLog({"after"}, CsvLog::IfThere::Append);
        const Log after = ReadCsv(file);
        ASSERT_EQ(after.timeMs.size(), before.timeMs.size() + 1);
        ASSERT_EQ(after.events.size(), before.events.size() + 1);
        ASSERT_EQ(after.torn, before.torn);
        ASSERT_EQ(std::ranges::count(Content(file), '"') % 2, 0) << "other programs would read on over the line";
    }
    EXPECT_EQ(complete, 3U);
}

TEST_F(CsvLogs, HeaderThatWasTornIsNotContinued) {
    WriteLog({});
    fs::resize_file(file, 200);
    EXPECT_NE(AppendError().find("run.csv, line "), std::string::npos);
}

TEST_F(CsvLogs, FullDiskAtTheStartIsAnError) {
    file = "/dev/full";
    EXPECT_EQ(ErrorOf([this] { WriteLog({}); }), "cannot write /dev/full: No space left on device");
}

/// No file may grow beyond that many bytes while this lives.
class FullDisk {
 public:
    explicit FullDisk(std::uintmax_t bytes) {
        getrlimit(RLIMIT_FSIZE, &m_before);
        m_handler = std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{bytes, m_before.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

 private:
    rlimit m_before{};
    void (*m_handler)(int) = nullptr;
};

TEST_F(CsvLogs, FullDiskIsToldOnceAndTheGapStandsInTheLog) {
    CsvLog log(file, snapshot, CsvLog::IfThere::Refuse);
    log.AddSample(snapshot);
    std::vector<std::optional<Event>> told;
    {
        const FullDisk disk(fs::file_size(file));
        for (int i = 1; i <= 3; ++i) {
            snapshot.when = {kEvening + i * 1000, static_cast<double>(i)};
            told.push_back(log.AddSample(snapshot));
        }
    }
    ASSERT_TRUE(told[0]);
    EXPECT_EQ(told[0]->kind, EventKind::Trouble);
    EXPECT_EQ(told[0]->text, "cannot write " + file.string() + ": File too large; each row is tried again");
    EXPECT_FALSE(told[1]);
    EXPECT_FALSE(told[2]);
    EXPECT_EQ(log.LostRows(), 3U);

    snapshot.when = {kEvening + 4000, 4.0};
    const std::optional<Event> back = log.AddSample(snapshot);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->text, "can write " + file.string() +
                              " again; 3 rows are missing, from 2026-11-21T21:40:01.000Z to 2026-11-21T21:40:03.000Z");
    EXPECT_FALSE(log.AddSample(snapshot));

    const Log read = ReadCsv(file);
    EXPECT_EQ(read.timeMs.size(), 3U);
    EXPECT_TRUE(read.torn.empty());
    ASSERT_EQ(read.events.size(), 1U);
    EXPECT_EQ(read.events[0].kind, EventKind::Trouble);
    EXPECT_EQ(read.events[0].text, back->text);
}

TEST_F(CsvLogs, RowThatTheDiskTookInPartIsFinishedLater) {
    CsvLog log(file, snapshot, CsvLog::IfThere::Refuse);
    log.AddSample(snapshot);
    {
        const FullDisk disk(fs::file_size(file) + 30);
        EXPECT_TRUE(log.AddEvent(MakeEvent("half of this")));
    }
    EXPECT_EQ(ReadCsv(file).torn.size(), 1U);
    const std::optional<Event> back = log.AddSample(snapshot);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->text, "can write " + file.string() + " again; no row is missing");
    EXPECT_EQ(log.LostRows(), 0U);
    const Log read = ReadCsv(file);
    EXPECT_TRUE(read.torn.empty());
    ASSERT_EQ(read.events.size(), 2U);
    EXPECT_EQ(read.events[0].text, "half of this");
    EXPECT_EQ(read.timeMs.size(), 2U);
}

TEST_F(CsvLogs, SecondTimeThatTheDiskIsFullIsToldToo) {
    CsvLog log(file, snapshot, CsvLog::IfThere::Refuse);
    for (int i = 0; i < 2; ++i) {
        {
            const FullDisk disk(fs::file_size(file));
            EXPECT_TRUE(log.AddSample(snapshot));
            EXPECT_FALSE(log.AddEvent(MakeEvent("x")));
        }
        const std::optional<Event> back = log.AddSample(snapshot);
        ASSERT_TRUE(back);
        EXPECT_NE(back->text.find("2 rows are missing"), std::string::npos) << back->text;
    }
    EXPECT_EQ(log.LostRows(), 4U);
}

/// The sentence that the reader says about a log whose one row is that line.
std::string RowError(const std::string& row) {
    const Snapshot snapshot = MakeSnapshot();
    const std::string text = FormatLogHeader({snapshot.device, 1.0, {snapshot.channels[0]}}) + row + "\n";
    return ErrorOf([&text] { ParseCsv(text, "run.csv"); });
}

TEST(CsvReader, ErrorsNameTheLine) {
    const std::string time = "2026-11-21T21:40:00.123Z";
    EXPECT_EQ(RowError(time + ",1.250,sample,,,37.1,37.5,ok,1"), "");
    EXPECT_EQ(RowError(time + ",1.250,sample,,,warm,37.5,ok,1"), "run.csv, line 8: a channel's values cannot be read");
    EXPECT_EQ(RowError(time + ",1.250,sample,,,nan,37.5,ok,1"), "run.csv, line 8: a channel's values cannot be read");
    EXPECT_EQ(RowError(time + ",1.250,sample,,,37.1,37.5,fine,1"),
              "run.csv, line 8: a channel's values cannot be read");
    EXPECT_EQ(RowError(time + ",1.250,sample,,,37.1,37.5,ok,2"), "run.csv, line 8: a channel's values cannot be read");
    EXPECT_EQ(RowError("yesterday,1.250,sample,,,37.1,37.5,ok,1"),
              "run.csv, line 8: \"yesterday\" is no time as 2026-11-21T21:40:00.123Z");
    EXPECT_EQ(RowError(time + ",soon,log,,,,,,"), "run.csv, line 8: \"soon\" is no number of seconds");
    EXPECT_EQ(RowError(time + ",1.250,party,,,,,,"), "run.csv, line 8: \"party\" is no kind of row");
    EXPECT_EQ(RowError(time + ",1.250,log,,a,b,,,,"), "run.csv, line 8: there are more fields than columns");
}

std::string HeaderError(const std::string& text) {
    return ErrorOf([&text] { ParseCsv(text, "run.csv"); });
}

TEST(CsvReader, HeaderErrorsNameTheLine) {
    EXPECT_EQ(HeaderError(""), "run.csv, line 1: this is no log of oko-host");
    EXPECT_EQ(HeaderError("# oko-host log 2\n"), "run.csv, line 1: this is no log of oko-host");
    EXPECT_EQ(HeaderError("# oko-host log 1\n# device: x\n"), "run.csv, line 2: the log ends before its first row");
    EXPECT_EQ(HeaderError("# oko-host log 1\n# interval: 0\n"), "run.csv, line 2: this is no interval");
    EXPECT_EQ(HeaderError("# oko-host log 1\n# channel: a,b\n"), "run.csv, line 2: a channel has ten fields");
    EXPECT_EQ(HeaderError("# oko-host log 1\n# channel: a,a,heat,0,%,0,0,0,0,1\n"),
              "run.csv, line 2: this is no channel");
    EXPECT_EQ(HeaderError("# oko-host log 1\n# channel: a,a,gas,0,%,low,0,0,0,1\n"),
              "run.csv, line 2: \"low\" is no number");
    EXPECT_EQ(HeaderError("# oko-host log 1\n# channel: a,a,gas,0,%,0,0,0,0,1\ntime,seconds,row,subject,text\n"),
              "run.csv, line 3: these are not the columns of the channels above");
}

TEST(CsvReader, NotesLineEndsOfAnEditorAndEmptyLinesDoNoHarm) {
    const std::string text =
        "# oko-host log 1\r\n# a note\r\n# channel: a,a,gas,0,%,0,0,0,0,1\r\n"
        "time,seconds,row,subject,text,a current [%],a target [%],a state,a valid\r\n\r\n"
        "2026-11-21T21:40:00.123Z,1,sample,,,5,5,ok,1\r\n";
    const Log log = ParseCsv(text, "run.csv");
    EXPECT_EQ(log.timeMs.size(), 1U);
    EXPECT_TRUE(log.torn.empty());
}

TEST(CsvReader, FileThatIsNotThereIsSaid) {
    const std::string error = ErrorOf([] { ReadCsv("/nowhere/run.csv"); });
    EXPECT_EQ(error, "cannot read /nowhere/run.csv: No such file or directory");
}

}  // namespace
