#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "model/Event.h"
#include "model/Snapshot.h"

/// The live page of a watch: what a command starts, tells of every row and event, and forgets.
class LivePage {
 public:
    struct Options {
        std::string address =
            "127.0.0.1";            // in numbers; others than this computer's own are reached with a token alone
        std::uint16_t port = 8080;  // 0: a free one
        std::string token;          // letters, digits, "-", ".", "_" and "~"; empty: one is made up
        bool allowSet = false;
        std::vector<std::string> hostNames;  // by which it may be called, beside this computer's own
    };

    /// Somebody wants a target. Called on the page's thread: it must return at once, and TargetDone is to be called
    /// with the same `request` when the device has answered. Who waits too long is told so.
    using SetTarget = std::function<void(std::uint64_t request, const std::string& key, double value)>;

    LivePage(const Options& options, SetTarget setTarget);
    ~LivePage();
    LivePage(const LivePage&) = delete;
    LivePage& operator=(const LivePage&) = delete;

    /// Why there is no page, for the user; nothing when there is one.
    std::optional<std::string> Start();

    /// Tells its readers what is still to be told, and ends.
    void Stop();

    /// Copies what it is given; waits for nobody.
    void Publish(const Snapshot& snapshot);
    void Publish(const Event& event);

    /// `taken` is what the device says it aims at now; nothing: it did not answer or refused.
    void TargetDone(std::uint64_t request, std::optional<double> taken);

    /// "http://127.0.0.1:8080/"; once it has started.
    std::string Url() const;

    /// The same for the first visit of a browser: what comes after needs no token in the address.
    std::string UrlWithToken() const;

 private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};
