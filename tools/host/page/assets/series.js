"use strict";
// Rows of values over time, and how few of them a screen needs.
//
// A history is {time: [ms...], channels: [{key, current: [...], target: [...]}]}; null is no value.
(function () {
    // The first row that is not before that time.
    oko.firstRow = function (time, ms) {
        let low = 0;
        let high = time.length;
        while (low < high) {
            const middle = (low + high) >> 1;
            if (time[middle] < ms) low = middle + 1;
            else high = middle;
        }
        return low;
    };

    // -1 where there are none.
    oko.nearestRow = function (time, ms) {
        const after = oko.firstRow(time, ms);
        const isBeforeNearer = after === time.length || (after > 0 && ms - time[after - 1] < time[after] - ms);
        return isBeforeNearer ? after - 1 : after;
    };

    const orNull = (value) => (Number.isNaN(value) ? null : value);

    function emptyLike(channels) {
        return {time: [], channels: channels.map((channel) => ({key: channel.key, current: [], target: []}))};
    }

    function addRow(history, ms, current, target) {
        history.time.push(ms);
        history.channels.forEach(function (channel, i) {
            channel.current.push(current(i));
            channel.target.push(target(i));
        });
    }

    // Rows of a bucket become two, with its least and its greatest value in the order in which they came; a third one
    // keeps a gap.
    function addBucket(history, data, begin, end) {
        const extremes = data.channels.map(function (channel) {
            let least = -1;
            let greatest = -1;
            let gap = false;
            for (let row = begin; row < end; ++row) {
                const value = channel.current[row];
                if (Number.isNaN(value)) {
                    gap = true;
                    continue;
                }
                if (least < 0 || value < channel.current[least]) least = row;
                if (greatest < 0 || value > channel.current[greatest]) greatest = row;
            }
            return {first: Math.min(least, greatest), second: Math.max(least, greatest), gap};
        });
        const value = (i, row) => (row < 0 ? null : data.channels[i].current[row]);
        const target = (i) => orNull(data.channels[i].target[end - 1]);
        const from = data.time[begin];
        const length = data.time[end - 1] - from;
        addRow(history, from, (i) => value(i, extremes[i].first), target);
        if (end - begin > 1) addRow(history, from + length / 2, (i) => value(i, extremes[i].second), target);
        if (end - begin > 2 && extremes.some((extreme) => extreme.gap)) {
            addRow(history, from + length * 0.75, (i) => (extremes[i].gap ? null : value(i, extremes[i].second)), target);
        }
    }

    // What a screen with that many points across shows of whole columns between two times: every row where they fit.
    // Columns are typed arrays with NaN for no value; rows further apart than `gapMs` get a row without values between.
    oko.thin = function (data, since, until, points, gapMs) {
        const history = emptyLike(data.channels);
        const begin = Math.max(0, oko.firstRow(data.time, since) - 1);
        const end = Math.min(data.time.length, oko.firstRow(data.time, until) + 1);
        const size = Math.max(1, Math.ceil(((end - begin) * 2) / points));
        const step = end - begin <= points ? 1 : size;
        for (let row = begin; row < end;) {
            let next = row + 1;
            while (next < Math.min(row + step, end) && data.time[next] - data.time[next - 1] <= gapMs) ++next;
            addBucket(history, data, row, next);
            if (next < end && data.time[next] - data.time[next - 1] > gapMs) {
                addRow(history, data.time[next - 1] + 1, () => null, () => null);
            }
            row = next;
        }
        return history;
    };

    oko.appendSnapshot = function (history, snapshot) {
        const byKey = new Map(snapshot.channels.map((channel) => [channel.key, channel]));
        const last = history.time[history.time.length - 1];
        if (last !== undefined && snapshot.timeMs <= last) return false;
        history.time.push(snapshot.timeMs);
        for (const column of history.channels) {
            const channel = byKey.get(column.key);
            column.current.push(channel ? channel.current : null);
            column.target.push(channel ? channel.target : null);
        }
        return true;
    };
})();
