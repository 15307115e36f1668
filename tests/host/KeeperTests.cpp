// What the threads beside the main one are told.

#include "keep/Keeper.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "keep/EventList.h"
#include "model/ChannelInfo.h"
#include "model/Event.h"
#include "model/Snapshot.h"

namespace {

constexpr std::int64_t kEndOfTime = std::numeric_limits<std::int64_t>::max();

Snapshot Row(std::uint64_t row, std::size_t channels = 1) {
    Snapshot snapshot;
    snapshot.row = row;
    snapshot.when.utcMs = static_cast<std::int64_t>(row) * 1000;
    for (std::size_t i = 0; i < channels; ++i) {
        ChannelInfo info;
        info.key = "H" + std::to_string(i);
        snapshot.channels.push_back(info);
        ChannelStatus status;
        status.reading.current = static_cast<double>(row);
        snapshot.statuses.push_back(status);
    }
    return snapshot;
}

Event WithId(std::uint64_t id) {
    Event event;
    event.id = id;
    event.text = "event " + std::to_string(id);
    return event;
}

std::vector<std::uint64_t> Ids(const std::vector<Event>& events) {
    std::vector<std::uint64_t> ids;
    for (const Event& event : events) {
        ids.push_back(event.id);
    }
    return ids;
}

TEST(EventList, GivesWhatCameAfterAnId) {
    EventList events;
    EXPECT_TRUE(events.After(0).empty());
    for (std::uint64_t id = 1; id <= 4; ++id) {
        events.Add(WithId(id));
    }
    EXPECT_EQ(Ids(events.After(0)), (std::vector<std::uint64_t>{1, 2, 3, 4}));
    EXPECT_EQ(Ids(events.After(2)), (std::vector<std::uint64_t>{3, 4}));
    EXPECT_TRUE(events.After(4).empty());
    EXPECT_EQ(events.After(3)[0].text, "event 4");
}

TEST(EventList, IdOfAnEarlierRunGivesAllOfThisOne) {
    EventList events;
    events.Add(WithId(1));
    events.Add(WithId(2));
    EXPECT_EQ(Ids(events.After(500)), (std::vector<std::uint64_t>{1, 2}));
}

TEST(EventList, OldestGoWhenThereAreTooMany) {
    EventList events(3);
    for (std::uint64_t id = 1; id <= 10; ++id) {
        events.Add(WithId(id));
    }
    EXPECT_EQ(Ids(events.After(0)), (std::vector<std::uint64_t>{8, 9, 10}));
    EXPECT_EQ(Ids(events.After(2)), (std::vector<std::uint64_t>{8, 9, 10}));
}

TEST(Keeper, HasNothingAtFirst) {
    const Keeper keeper;
    EXPECT_EQ(keeper.Newest(), nullptr);
    EXPECT_EQ(keeper.Rows(0, kEndOfTime).rows.Size(), 0U);
    EXPECT_EQ(keeper.Rows(0, kEndOfTime).snapshot, nullptr);
    EXPECT_TRUE(keeper.EventsAfter(0).empty());
}

TEST(Keeper, SnapshotIsARowOfTheHistoryOnlyWhenItsRowIsNew) {
    Keeper keeper;
    keeper.Add(Row(0));
    keeper.Add(Row(1));
    Snapshot again = Row(1);
    again.live = true;
    keeper.Add(again);
    keeper.Add(Row(2));
    EXPECT_EQ(keeper.Rows(0, kEndOfTime).rows.Rows().channels[0].current, (std::vector<float>{1, 2}));
    keeper.Add(again);
    EXPECT_TRUE(keeper.Newest()->live);
}

TEST(Keeper, HistoryStartsAnewWithOtherChannels) {
    Keeper keeper;
    keeper.Add(Row(1, 1));
    keeper.Add(Row(2, 3));
    const Keeper::Part part = keeper.Rows(0, kEndOfTime);
    EXPECT_EQ(part.rows.Rows().channels.size(), 3U);
    EXPECT_EQ(part.rows.Size(), 1U);
    EXPECT_EQ(part.snapshot->channels.size(), 3U);
}

TEST(Keeper, ReadersSeeEveryRowWholeWhileTheWatchGoesOn) {
    Keeper keeper;
    std::atomic<bool> isDone = false;
    std::atomic<std::size_t> read = 0;
    std::vector<std::jthread> readers;
    for (int reader = 0; reader < 3; ++reader) {
        readers.emplace_back([&] {
            while (!isDone || read == 0) {
                const HistoryTable table = keeper.Rows(0, kEndOfTime).rows.Thinned(60);
                for (const HistoryTable::Channel& channel : table.channels) {
                    EXPECT_EQ(channel.current, table.channels[0].current);
                }
                const auto newest = keeper.Newest();
                const auto events = keeper.EventsAfter(0);
                read += table.utcMs.size() + (newest ? newest->channels.size() : 0) + events.size();
            }
        });
    }
    for (std::uint64_t row = 1; row <= 5000; ++row) {
        keeper.Add(Row(row, 4));
        keeper.Add(WithId(row));
    }
    isDone = true;
    readers.clear();
    EXPECT_EQ(keeper.Rows(0, kEndOfTime).rows.Size(), 5000U);
    EXPECT_GT(read, 0U);
}

}  // namespace
