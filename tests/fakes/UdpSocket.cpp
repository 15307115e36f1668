#include "platform/UdpSocket.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "fakes/ScriptedPlatform.h"

namespace {

constexpr int kFailed = -1;         // SOCKET_ERROR
constexpr int kNotASocket = 10038;  // WSAENOTSOCK
constexpr std::uintptr_t kInvalidHandle = ~std::uintptr_t{0};

std::atomic<std::uintptr_t> s_nextHandle = 100;

}  // namespace

void ScriptedServer::Answer(std::string_view command, ServerReply reply) { AnswerInTurn(command, {std::move(reply)}); }

void ScriptedServer::AnswerPayload(std::string_view command, std::string_view payload) {
    Answer(command, std::string("0_").append(command).append("_").append(payload).append("\r"));
}

void ScriptedServer::AnswerInTurn(std::string_view command, std::vector<ServerReply> replies) {
    const std::scoped_lock lock(m_mutex);
    m_answers.insert_or_assign(std::string(command), std::deque(replies.begin(), replies.end()));
}

void ScriptedServer::SetDefault(Handler handler) {
    const std::scoped_lock lock(m_mutex);
    m_default = std::move(handler);
}

std::string ScriptedServer::BuiltInReply(std::string_view command) {
    return std::string("0_").append(command).append("_1\r");
}

void ScriptedServer::StaySilent(std::string_view command) {
    const std::scoped_lock lock(m_mutex);
    m_silent.emplace(command);
}

void ScriptedServer::Speak(std::string_view command) {
    const std::scoped_lock lock(m_mutex);
    m_silent.erase(std::string(command));
}

void ScriptedServer::Deliver(std::string bytes) {
    const std::scoped_lock lock(m_mutex);
    for (auto& [handle, socket] : m_sockets) {
        socket.replies.emplace_back(bytes);
    }
}

void ScriptedServer::SendResults(std::vector<int> results) {
    const std::scoped_lock lock(m_mutex);
    m_sendResults.assign(results.begin(), results.end());
}

std::vector<std::string> ScriptedServer::Commands() const {
    const std::scoped_lock lock(m_mutex);
    return m_commands;
}

std::vector<std::string> ScriptedServer::Calls() const {
    const std::scoped_lock lock(m_mutex);
    return m_calls;
}

void ScriptedServer::ClearCommands() {
    const std::scoped_lock lock(m_mutex);
    m_commands.clear();
    m_calls.clear();
}

std::size_t ScriptedServer::OpenSockets() const {
    const std::scoped_lock lock(m_mutex);
    return m_sockets.size();
}

void ScriptedServer::Record(const std::string& call) {
    if (onCall) {
        onCall(call);
    }
    const std::scoped_lock lock(m_mutex);
    m_calls.push_back(call);
}

bool ScriptedServer::StartUp() {
    Record("startup");
    return !failStartUp;
}

std::optional<std::uintptr_t> ScriptedServer::OpenSocket() {
    Record("open");
    const std::scoped_lock lock(m_mutex);
    if (failOpen) {
        return std::nullopt;
    }
    const std::uintptr_t handle = s_nextHandle++;
    m_sockets[handle] = {};
    return handle;
}

void ScriptedServer::Connect(std::uintptr_t handle, std::uint16_t port) {
    Record("connect " + std::to_string(port));
    const std::scoped_lock lock(m_mutex);
    const auto socket = m_sockets.find(handle);
    if (socket != m_sockets.end()) {
        socket->second.connected = true;
    }
}

int ScriptedServer::Send(std::uintptr_t handle, std::string_view command) {
    const std::string text(command);
    std::optional<ServerReply> reply;
    Handler handler;
    int result = static_cast<int>(text.size());
    Record("send " + text);
    {
        const std::scoped_lock lock(m_mutex);
        const auto socket = m_sockets.find(handle);
        if (socket == m_sockets.end() || !socket->second.connected) {
            return kFailed;
        }
        m_commands.push_back(text);
        if (!m_sendResults.empty()) {
            result = m_sendResults.front();
            m_sendResults.pop_front();
        }
        if (m_silent.contains(text)) {
            return result;
        }
        reply = NextScriptedReply(text);
        handler = m_default;
    }
    if (!reply) {
        reply = handler ? handler(text) : BuiltInReply(text);
    }

    const std::scoped_lock lock(m_mutex);
    const auto socket = m_sockets.find(handle);
    if (socket != m_sockets.end()) {
        socket->second.replies.push_back(*std::move(reply));
    }
    return result;
}

bool ScriptedServer::WaitForDatagram(std::uintptr_t handle, std::uint32_t milliseconds) {
    Record("wait " + std::to_string(milliseconds));
    const std::scoped_lock lock(m_mutex);
    const auto socket = m_sockets.find(handle);
    return socket == m_sockets.end() || !socket->second.replies.empty();
}

bool ScriptedServer::HasWaiting(std::uintptr_t handle) {
    ++waitingChecks;
    const std::scoped_lock lock(m_mutex);
    const auto socket = m_sockets.find(handle);
    // As a system does, of the first datagram: an empty one and a failure have no content to tell of.
    return socket != m_sockets.end() && !socket->second.replies.empty() &&
           !socket->second.replies.front().value_or("").empty();
}

Received ScriptedServer::Receive(std::uintptr_t handle, char* bytes, int capacity) {
    Record("receive " + std::to_string(capacity));
    const std::scoped_lock lock(m_mutex);
    const auto socket = m_sockets.find(handle);
    // The real call would wait for ever when nothing was sent; a test is better served with a failure.
    if (socket == m_sockets.end() || socket->second.replies.empty()) {
        return {ReceiveOutcome::Failed, kFailed};
    }
    const ServerReply reply = std::move(socket->second.replies.front());
    socket->second.replies.pop_front();
    if (!reply) {
        return {ReceiveOutcome::Failed, kFailed};
    }
    const auto length = static_cast<int>(reply->size());
    std::copy_n(reply->data(), std::min(length, capacity), bytes);
    return length <= capacity ? Received{ReceiveOutcome::Datagram, length} : Received{ReceiveOutcome::TooLong, kFailed};
}

int ScriptedServer::CloseSocket(std::uintptr_t handle) {
    Record("close");
    const std::scoped_lock lock(m_mutex);
    if (closeError != 0) {
        return closeError;
    }
    return m_sockets.erase(handle) == 1 ? 0 : kNotASocket;
}

/// Nothing when the command has no answer of its own.
std::optional<ServerReply> ScriptedServer::NextScriptedReply(const std::string& command) {
    const auto answer = m_answers.find(command);
    if (answer == m_answers.end() || answer->second.empty()) {
        return std::nullopt;
    }
    std::deque<ServerReply>& replies = answer->second;
    std::optional<ServerReply> reply(std::in_place, replies.front());
    if (replies.size() > 1) {
        replies.pop_front();
    }
    return reply;
}

bool UdpSocket::StartUp() noexcept { return ScriptedPlatform::Current().server.StartUp(); }

void UdpSocket::Open() noexcept {
    ScriptedServer& server = ScriptedPlatform::Current().server;
    if (m_bOpen) {
        server.CloseSocket(m_handle);
    }
    const auto handle = server.OpenSocket();
    m_handle = handle.value_or(kInvalidHandle);
    m_bOpen = handle.has_value();
}

void UdpSocket::ConnectLoopback(std::uint16_t port) noexcept {
    ScriptedPlatform::Current().server.Connect(m_handle, port);
}

int UdpSocket::Send(const char* bytes, int length) noexcept {
    return ScriptedPlatform::Current().server.Send(m_handle, {bytes, static_cast<std::size_t>(length)});
}

bool UdpSocket::WaitForDatagram(std::uint32_t milliseconds) noexcept {
    ScriptedPlatform& platform = ScriptedPlatform::Current();
    if (platform.server.WaitForDatagram(m_handle, milliseconds)) {
        return true;
    }
    platform.clock.Advance(milliseconds);  // the wait takes no real time
    return false;
}

bool UdpSocket::HasWaiting() noexcept { return ScriptedPlatform::Current().server.HasWaiting(m_handle); }

Received UdpSocket::Receive(char* bytes, int capacity) noexcept {
    return ScriptedPlatform::Current().server.Receive(m_handle, bytes, capacity);
}

int UdpSocket::Close() noexcept {
    const int error = ScriptedPlatform::Current().server.CloseSocket(m_handle);
    if (error == 0) {
        m_bOpen = false;
    }
    return error;
}
