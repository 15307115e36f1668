#pragma once

#include <string>
#include <utility>

#include "page/Request.h"

/// A request as a program on this computer sends it.
inline Request Ask(std::string method, std::string target, Headers headers = {}, std::string body = {}) {
    headers.emplace_back("Host", "127.0.0.1:8080");
    return {std::move(method), std::move(target), std::move(headers), std::move(body)};
}
inline Request Get(std::string target, Headers headers = {}) {
    return Ask("GET", std::move(target), std::move(headers));
}
