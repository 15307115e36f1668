#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace check {

/// The emulated server cannot have its port; the text is for the user.
class CheckServerError : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// The emulated server that the library meets, on the only port that it knows, on a thread of its own.
class CheckServer {
 public:
    /// Throws CheckServerError.
    CheckServer();
    ~CheckServer();
    CheckServer(const CheckServer&) = delete;
    CheckServer& operator=(const CheckServer&) = delete;

    /// A new incubator without rules, to which nobody has spoken. The name of a ready scenario; without one it is the
    /// incubator of check/Incubator.h.
    void Begin(const std::string& scenario);

    /// From now on these rules, "readcurval 9; always; code 3", in the place of the earlier ones.
    void SetRules(const std::vector<std::string>& rules);

    /// The commands that have come since Begin, or since the last time.
    std::vector<std::string> TakeCommands();

 private:
    struct Impl;
    std::unique_ptr<Impl> m_pImpl;
};

}  // namespace check
