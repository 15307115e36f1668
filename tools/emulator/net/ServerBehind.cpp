#include "net/ServerBehind.h"

#include <boost/asio/io_context.hpp>
#include <filesystem>
#include <string>

#include "net/UdpServer.h"
#include "platform/StartProgram.h"
#include "text/Text.h"

namespace emulator {

ServerBehind StartServerBehind(boost::asio::io_context& context, const std::filesystem::path& program, int port) {
    const std::string words = "port " + std::to_string(port);
    if (IsPortTaken(context, port)) {
        return {BehindState::RunsAlready,
                "a server has " + words + " already: " + PathText(program) + " is not started"};
    }
    const std::string problem = StartProgramIn(program.parent_path(), program,
                                               {"server", "address=localhost", "port=" + std::to_string(port)}, "");
    if (!problem.empty()) {
        return {BehindState::Failed, problem};
    }
    return {BehindState::Started, "started " + PathText(program) + " on " + words};
}

}  // namespace emulator
