"use strict";
// Zoom and pan by pointer and by key; all charts follow.
(function () {
    const kLeastDrag = 6; // px; less is a click

    class Gestures {
        constructor(plot, graph, charts) {
            this.plot = plot;
            this.graph = graph;
            this.charts = charts;
            this.pointers = new Map();
            this.selection = oko.element("div", {className: "selection", hidden: true});
            plot.append(this.selection);
            plot.addEventListener("pointerdown", (event) => this.down(event));
            plot.addEventListener("pointermove", (event) => this.move(event));
            plot.addEventListener("pointerup", (event) => this.up(event));
            plot.addEventListener("pointercancel", (event) => this.cancel(event));
            plot.addEventListener("dblclick", () => charts.showRange());
            plot.addEventListener("keydown", (event) => this.key(event));
        }

        x(event) {
            return event.clientX - this.plot.getBoundingClientRect().left;
        }

        down(event) {
            if (event.button !== 0) return;
            this.plot.setPointerCapture(event.pointerId);
            this.pointers.set(event.pointerId, {start: this.x(event), now: this.x(event)});
            this.pans = event.shiftKey || event.pointerType === "touch";
            this.window = [this.charts.from, this.charts.to];
        }

        // The stretch of time between two places in the window that the gesture began with.
        timeAt(x) {
            const {x: left, w: width} = this.graph.getArea();
            const share = Math.min(1, Math.max(0, (x - left) / width));
            return this.window[0] + share * (this.window[1] - this.window[0]);
        }

        move(event) {
            const pointer = this.pointers.get(event.pointerId);
            if (!pointer) return;
            pointer.now = this.x(event);
            const all = [...this.pointers.values()];
            if (all.length === 2) return this.pinch(all);
            if (Math.abs(pointer.now - pointer.start) < kLeastDrag) return;
            if (this.pans) {
                const perPixel = (this.window[1] - this.window[0]) / this.graph.getArea().w;
                const by = (pointer.start - pointer.now) * perPixel;
                this.charts.show(this.window[0] + by, this.window[1] + by);
                return;
            }
            const {x: left, w: width} = this.graph.getArea();
            const from = Math.max(left, Math.min(pointer.start, pointer.now));
            const to = Math.min(left + width, Math.max(pointer.start, pointer.now));
            this.selection.hidden = false;
            this.selection.style.left = from + "px";
            this.selection.style.width = Math.max(0, to - from) + "px";
        }

        // Two fingers: the times under them stay under them.
        pinch([one, two]) {
            const apart = Math.abs(one.now - two.now);
            const before = Math.abs(one.start - two.start);
            if (apart < kLeastDrag || before < kLeastDrag) return;
            const middle = this.timeAt((one.start + two.start) / 2);
            const scale = before / apart;
            this.charts.show(middle - (middle - this.window[0]) * scale, middle + (this.window[1] - middle) * scale);
        }

        up(event) {
            const pointer = this.pointers.get(event.pointerId);
            if (!pointer) return;
            this.pointers.delete(event.pointerId);
            this.selection.hidden = true;
            if (this.pans || Math.abs(pointer.now - pointer.start) < kLeastDrag) return;
            const times = [this.timeAt(pointer.start), this.timeAt(pointer.now)];
            this.charts.show(Math.min(...times), Math.max(...times));
        }

        cancel(event) {
            this.pointers.delete(event.pointerId);
            this.selection.hidden = true;
        }

        key(event) {
            if (event.ctrlKey || event.altKey || event.metaKey) return;
            const moves = {
                ArrowLeft: () => this.charts.pan(-0.25), ArrowRight: () => this.charts.pan(0.25), "+": () => this.charts.zoom(0.5),
                "=": () => this.charts.zoom(0.5), "-": () => this.charts.zoom(2), Home: () => this.charts.showAll(),
                End: () => this.charts.showRange(), Escape: () => this.charts.showRange(),
            };
            if (!(event.key in moves)) return;
            event.preventDefault();
            moves[event.key]();
        }
    }

    oko.addGestures = (plot, graph, charts) => new Gestures(plot, graph, charts);
})();
