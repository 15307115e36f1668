"use strict";
// One chart: all channels of a quantity.
(function () {
    // Of dygraphs's granularities of the time axis, which it does not export.
    const kMinutely = 12;
    const kDaily = 20;

    function chip(channel, index) {
        const value = oko.element("span", {className: "at"});
        const button = oko.element("button", {type: "button", className: "chip", "aria-pressed": "true",
            title: "Shows or hides " + channel.name}, oko.swatch(index), channel.name, " ", value);
        return {button, value};
    }

    // The legend is the chips below the chart; dygraphs's own would set styles in a way that the page's policy forbids.
    Dygraph.PLUGINS = Dygraph.PLUGINS.filter((plugin) => plugin !== Dygraph.Plugins.Legend);

    class Chart {
        // charts: whom to tell of what the pointer does.
        constructor(kind, channels, charts) {
            this.kind = kind;
            this.channels = channels;
            this.keys = new Set(channels.map((channel) => channel.key));
            this.charts = charts;
            this.isShown = channels.map(() => true);
            this.picked = -1;
            this.time = [];
            this.columns = [];
            this.hasNewRows = false;
            this.build();
        }

        build() {
            const name = oko.quantityNames[this.kind];
            this.caption = oko.element("span", {className: "cursor"});
            this.chips = this.channels.map((channel, i) => chip(channel, i));
            this.plot = oko.element("div", {className: "plot", tabIndex: 0, role: "group", "aria-describedby": "charts-help",
                "aria-label": "Chart: " + name.toLowerCase() + " of " + this.channels.map((channel) => channel.name).join(", ")});
            this.element = oko.element("article", {className: "chart", "data-kind": this.kind},
                oko.element("div", {className: "bar"}, oko.element("h3", {}, name + " [" + this.channels[0].unit + "]"), this.caption),
                this.plot,
                oko.element("div", {className: "chips", role: "group", "aria-label": "Lines of the chart"},
                    ...this.chips.map((one) => one.button)));
            this.chips.forEach((one, i) => this.wireChip(one.button, i));
        }

        wireChip(button, i) {
            const pick = (index) => () => {
                this.picked = index;
                this.redraw();
            };
            button.addEventListener("click", () => {
                this.isShown[i] = !this.isShown[i];
                button.setAttribute("aria-pressed", String(this.isShown[i]));
                this.graph.setVisibility(i, this.isShown[i]);
                this.fitValues();
            });
            button.addEventListener("mouseenter", pick(i));
            button.addEventListener("mouseleave", pick(-1));
            button.addEventListener("focus", pick(i));
            button.addEventListener("blur", pick(-1));
        }

        options() {
            return {
                labels: ["time", ...this.channels.map((channel) => channel.key)],
                colors: this.channels.map((channel, i) => oko.seriesColor(i)),
                series: Object.fromEntries(this.channels.map((channel, i) => [channel.key, {strokePattern: oko.seriesDashes(i)}])),
                visibility: this.isShown,
                gridLineColor: oko.color("--grid"),
                axisLineColor: oko.color("--line"),
            };
        }

        create() {
            const hour = (ms) => oko.clock(ms).slice(0, 5);
            this.graph = new Dygraph(this.plot, this.rows(), {
                ...this.options(),
                axes: {
                    x: {axisLabelWidth: 64, pixelsPerLabel: 80,
                        axisLabelFormatter: (value, granularity) => {
                            if (granularity >= kDaily) return oko.day(Number(value));
                            if (oko.clock(Number(value)) === "00:00:00") return oko.day(Number(value));
                            return granularity < kMinutely ? oko.clock(Number(value)) : hour(Number(value));
                        }},
                    y: {axisLabelWidth: 44, pixelsPerLabel: 32},
                },
                connectSeparatedPoints: false,
                drawGapEdgePoints: true,
                strokeWidth: 1.5,
                highlightCircleSize: 3,
                interactionModel: {},
                animatedZooms: false,
                rightGap: 10,
                underlayCallback: (canvas, area, graph) => this.underlay(canvas, area, graph),
                highlightCallback: (event) => this.charts.point(event, this),
                unhighlightCallback: () => this.charts.unpoint(),
            });
            oko.addGestures(this.plot, this.graph, this.charts);
            this.cursor = oko.element("div", {className: "cursor-line", hidden: true});
            this.plot.append(this.cursor);
        }

        rows() {
            if (this.time.length === 0) return [[this.charts.from, ...this.channels.map(() => null)]];
            return this.time.map((ms, row) => [ms, ...this.columns.map((column) => column.current[row])]);
        }

        underlay(canvas, area, graph) {
            const banded = this.channels.filter((channel, i) => channel.canSet && this.isShown[i]).length;
            const lines = this.channels.flatMap((channel, i) => {
                if (!channel.canSet || !this.isShown[i] || !this.columns[i]) return [];
                if (this.picked >= 0 && this.picked !== i) return [];
                return [{channel, column: this.columns[i], color: oko.seriesColor(i), isStrong: banded <= 3 || this.picked === i}];
            });
            oko.drawBands(canvas, area, graph, this.time, lines);
            oko.drawEvents(canvas, area, graph, oko.eventsOf(this.charts.events, this.keys));
        }

        // Takes a history of all channels, which fitValues then draws; rows are the same in all charts.
        take(history) {
            const byKey = new Map(history.channels.map((column) => [column.key, column]));
            this.time = history.time;
            this.columns = this.channels.map((channel) => byKey.get(channel.key) || {current: [], target: []});
            if (!this.graph) return this.create();
            this.hasNewRows = true;
        }

        // What is in sight, with the bands of it.
        valueRange() {
            let least = Infinity;
            let greatest = -Infinity;
            const see = (low, high) => {
                least = Math.min(least, low);
                greatest = Math.max(greatest, high);
            };
            const begin = Math.max(0, oko.firstRow(this.time, this.charts.from) - 1);
            const end = Math.min(this.time.length, oko.firstRow(this.time, this.charts.to) + 1);
            this.channels.forEach((channel, i) => {
                if (!this.isShown[i]) return;
                const {current, target} = this.columns[i];
                for (let row = begin; row < end; ++row) {
                    if (typeof current[row] === "number") see(current[row], current[row]);
                    if (channel.canSet && typeof target[row] === "number") see(target[row] - channel.below, target[row] + channel.above);
                }
            });
            if (least > greatest) return [0, 1];
            const margin = Math.max((greatest - least) * 0.08, 0.05);
            return [least - margin, greatest + margin];
        }

        fitValues() {
            if (!this.graph) return;
            const options = {valueRange: this.valueRange(), dateWindow: [this.charts.from, this.charts.to]};
            // Rows must come with the call that draws: dygraphs keeps what it gets without drawing, and never loads it.
            if (this.hasNewRows) options.file = this.rows();
            this.hasNewRows = false;
            this.graph.updateOptions(options);
        }

        recolor() {
            if (this.graph) this.graph.updateOptions(this.options());
        }

        redraw() {
            if (this.graph) this.graph.updateOptions({});
        }

        // The values at a row, on the chips; null takes them away.
        tell(row) {
            if (!this.graph) return;
            this.cursor.hidden = row === null;
            if (row !== null) this.cursor.style.left = this.graph.toDomXCoord(this.time[row]) + "px";
            this.chips.forEach((one, i) => {
                const value = row === null || !this.columns[i] ? undefined : this.columns[i].current[row];
                oko.setText(one.value, row === null ? "" : oko.value(value));
            });
        }
    }

    oko.Chart = Chart;
})();
