#include "program/RunFrame.h"

#include <boost/system/error_code.hpp>
#include <chrono>
#include <functional>
#include <string>
#include <utility>

#include "program/LineOutput.h"
#include "program/Options.h"

namespace emulator {

namespace {

constexpr std::chrono::milliseconds kFrame{25};

}  // namespace

RunFrame::RunFrame(const Options& options, std::function<void(const std::string&)> onLine)
    : m_output(WriteToOutput), m_ending(m_context, options.forSeconds), m_timer(m_context) {
    Now();
    if (!onLine) {
        onLine = [](const std::string&) {};
    }
    if (options.untilEof || options.controlInput) {
        // Whoever started the program is gone, or has no more use for it, when its input ends. Under Wine a program
        // that is killed instead can leave its port taken.
        m_input.emplace(m_context, std::move(onLine), [this, ends = options.untilEof] { m_over = m_over || ends; });
    }
}

void RunFrame::Run(std::function<void()> onTick) {
    m_onTick = std::move(onTick);
    Tick();
    m_context.run();
}

void RunFrame::Tick() {
    m_onTick();
    if (m_over) {
        m_context.stop();
        return;
    }
    m_timer.expires_after(kFrame);
    m_timer.async_wait([this](boost::system::error_code error) {
        if (!error) {
            Tick();
        }
    });
}

double RunFrame::Now() {
    static const auto start = std::chrono::steady_clock::now();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace emulator
