"use strict";
// What a chart shows beside its lines: targets, the bands around them, and events.
(function () {
    // Stretches of rows over which a target stays the same: [first, last, target].
    function stretches(time, target) {
        const found = [];
        let begin = 0;
        for (let row = 1; row <= time.length; ++row) {
            if (row < time.length && target[row] === target[begin]) continue;
            if (target[begin] !== null && target[begin] !== undefined) found.push([begin, Math.min(row, time.length - 1), target[begin]]);
            begin = row;
        }
        return found;
    }

    // canvas: a 2D context; area: the chart's inside; graph: its dygraph; lines: [{channel, column, color, isStrong}].
    oko.drawBands = function (canvas, area, graph, time, lines) {
        canvas.save();
        canvas.beginPath();
        canvas.rect(area.x, area.y, area.w, area.h);
        canvas.clip();
        for (const line of lines) {
            for (const [first, last, target] of stretches(time, line.column.target)) {
                const left = graph.toDomXCoord(time[first]);
                const right = graph.toDomXCoord(time[last]);
                const top = graph.toDomYCoord(target + line.channel.above);
                const bottom = graph.toDomYCoord(target - line.channel.below);
                canvas.fillStyle = line.color;
                canvas.globalAlpha = line.isStrong ? 0.12 : Math.max(0.015, 0.16 / lines.length);
                canvas.fillRect(left, top, Math.max(1, right - left), bottom - top);
                canvas.globalAlpha = line.isStrong ? 0.8 : 0.35;
                canvas.strokeStyle = line.color;
                canvas.lineWidth = 1;
                canvas.setLineDash([4, 4]);
                const y = Math.round(graph.toDomYCoord(target)) + 0.5;
                canvas.beginPath();
                canvas.moveTo(left, y);
                canvas.lineTo(right, y);
                canvas.stroke();
            }
        }
        canvas.restore();
    };

    const shown = {
        "target changed": "--mark", "air mode": "--mark", "link lost": "--bad", "link back": "--good", "alarm on": "--bad",
        "alarm off": "--good", "protocol": "--mark", "trouble": "--bad", "started": "--quiet", "ended": "--quiet",
    };

    oko.isMarked = (event) => event.kind in shown;

    // A chart of temperatures says nothing of what happened to a gas.
    oko.eventsOf = function (events, keys) {
        return events.filter((event) => oko.isMarked(event) && (event.channel === "" || keys.has(event.channel)));
    };

    oko.drawEvents = function (canvas, area, graph, events) {
        canvas.save();
        canvas.lineWidth = 1;
        for (const event of events) {
            const x = Math.round(graph.toDomXCoord(event.timeMs)) + 0.5;
            if (x < area.x || x > area.x + area.w) continue;
            const color = oko.color(shown[event.kind]);
            canvas.strokeStyle = color;
            canvas.fillStyle = color;
            canvas.globalAlpha = 0.75;
            canvas.setLineDash(event.kind === "link lost" ? [3, 3] : []);
            canvas.beginPath();
            canvas.moveTo(x, area.y);
            canvas.lineTo(x, area.y + area.h);
            canvas.stroke();
            canvas.setLineDash([]);
            canvas.beginPath();
            canvas.moveTo(x - 4, area.y);
            canvas.lineTo(x + 4, area.y);
            canvas.lineTo(x, area.y + 6);
            canvas.fill();
        }
        canvas.restore();
    };

    // The event that the pointer is at, for the line above the chart.
    oko.eventNear = function (events, graph, x) {
        let nearest = null;
        let distance = 7;
        for (const event of events) {
            const away = Math.abs(graph.toDomXCoord(event.timeMs) - x);
            if (away < distance) {
                distance = away;
                nearest = event;
            }
        }
        return nearest;
    };
})();
