"use strict";
// A running oko-host as the source of values.
(function () {
    const kRetryMs = 2000;

    async function getJson(path) {
        const reply = await fetch(path, {cache: "no-store"});
        if (!reply.ok) {
            const body = await reply.json().catch(() => ({}));
            throw Object.assign(new Error(body.error || "HTTP " + reply.status), {isAnswer: true});
        }
        return reply.json();
    }

    class LiveSource {
        constructor() {
            this.isLive = true;
            this.lastEvent = 0;
        }

        // handlers: snapshot(snapshot), event(event), connection(isThere, problem), restarted()
        async start(handlers) {
            this.handlers = handlers;
            this.connect();
        }

        async connect() {
            try {
                const snapshot = await getJson("/api/channels");
                this.handlers.snapshot(snapshot);
                await this.catchUp();
            } catch (error) {
                this.handlers.connection(false, error.isAnswer ? error.message : "oko-host cannot be reached; trying again");
                setTimeout(() => this.connect(), kRetryMs);
                return;
            }
            this.listen();
        }

        listen() {
            let wasOpen = false;
            const stream = new EventSource("/api/stream");
            stream.addEventListener("open", async () => {
                this.handlers.connection(true);
                // The browser came back by itself: what was missed in between is asked for.
                if (wasOpen) await this.catchUp().catch(() => {});
                wasOpen = true;
            });
            stream.addEventListener("snapshot", (message) => this.handlers.snapshot(JSON.parse(message.data)));
            stream.addEventListener("event", (message) => this.take(JSON.parse(message.data)));
            stream.addEventListener("error", () => {
                this.handlers.connection(false, "the connection to oko-host is lost; trying again");
                if (stream.readyState === EventSource.CLOSED) {
                    stream.close();
                    setTimeout(() => this.connect(), kRetryMs);
                }
            });
        }

        async catchUp() {
            const {events} = await getJson("/api/events?since=0");
            const newest = events.reduce((most, event) => Math.max(most, event.id), 0);
            if (newest < this.lastEvent) {
                // Ids count from 1 within a run: this is another one.
                this.lastEvent = 0;
            }
            this.handlers.restarted();
            events.forEach((event) => this.take(event, true));
        }

        take(event, isAgain) {
            if (!isAgain && event.id <= this.lastEvent) return;
            this.lastEvent = Math.max(this.lastEvent, event.id);
            this.handlers.event(event, Boolean(isAgain));
        }

        history(since, until, points) {
            return getJson("/api/history?since=" + Math.floor(since) + "&until=" + Math.ceil(until) + "&points=" + points);
        }

        async setTarget(key, value, token) {
            const headers = {"Content-Type": "application/json"};
            if (token) headers.Authorization = "Bearer " + token;
            const reply = await fetch("/api/channels/" + encodeURIComponent(key) + "/target",
                {method: "PUT", headers, body: JSON.stringify({value})});
            return {status: reply.status, body: await reply.json().catch(() => ({}))};
        }
    }

    oko.LiveSource = LiveSource;
})();
