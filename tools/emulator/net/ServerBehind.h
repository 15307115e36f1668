#pragma once

#include <boost/asio/io_context.hpp>
#include <filesystem>
#include <string>

namespace emulator {

enum class BehindState { Started, RunsAlready, Failed };

struct ServerBehind {
    BehindState state = BehindState::Failed;
    std::string sentence;  // for the user
};

/// Starts a server's program, in its own folder and with the words that clients start it with, on another port than
/// theirs. Where something has that port already, nothing is started.
ServerBehind StartServerBehind(boost::asio::io_context& context, const std::filesystem::path& program, int port);

}  // namespace emulator
