"use strict";
// A log inside this file as the source of values.
(function () {
    function bytesOf(base64) {
        const binary = atob(base64);
        const bytes = new Uint8Array(binary.length);
        for (let i = 0; i < binary.length; ++i) bytes[i] = binary.charCodeAt(i);
        return bytes;
    }

    // Columns of whole numbers: each is how far it lies from the one before, in seven bits a byte. 0 is no value, 1 says
    // how often the last one comes again.
    class ColumnReader {
        constructor(bytes) {
            this.bytes = bytes;
            this.at = 0;
        }

        number() {
            let number = 0;
            let scale = 1;
            for (;;) {
                const byte = this.bytes[this.at++];
                number += (byte & 127) * scale;
                if (byte < 128) return number;
                scale *= 128;
            }
        }

        column(rows, divisor) {
            const values = new Float64Array(rows);
            let last = 0;
            let delta = 0;
            let isValue = false;
            for (let row = 0; row < rows;) {
                const code = this.number();
                let count = 1;
                if (code === 1) {
                    count = this.number();
                } else {
                    isValue = code !== 0;
                    delta = code % 2 === 0 ? (code - 2) / 2 : -(code - 1) / 2;
                }
                for (; count > 0; --count) {
                    if (isValue) last += delta;
                    values[row++] = isValue ? last / divisor : NaN;
                }
            }
            return values;
        }
    }

    class ReportSource {
        constructor(head, base64) {
            this.isLive = false;
            this.head = head;
            const reader = new ColumnReader(bytesOf(base64));
            this.time = reader.column(head.rows, 1);
            this.channels = head.channels.map(function (channel) {
                const divisor = 10 ** channel.decimals;
                const current = reader.column(head.rows, divisor);
                const target = reader.column(head.rows, divisor);
                return {key: channel.key, current, target};
            });
        }

        async start(handlers) {
            handlers.report(this.head);
            this.head.events.forEach((event) => handlers.event(event, true));
        }

        async history(since, until, points) {
            return oko.thin(this, since, until, points, this.head.interval * 3000);
        }
    }

    oko.reportSource = function () {
        const head = document.getElementById("report-head");
        if (!head) return null;
        const data = document.getElementById("report-data");
        return new ReportSource(JSON.parse(head.textContent), data.textContent);
    };
})();
