#pragma once

#include <functional>
#include <string_view>

/// One error that the server's status report names.
struct StatusError {
    int product = 0;
    int device = 0;
    int error = 0;
};

enum class StatusOutcome { Complete, NumberTooLong };

/// Hands every error in a reply to "status" to `take`, in order. An error whose last number is followed directly by the
/// carriage return is left out: the server ends its triples with a blank, so a last number without one is unfinished.
/// Stops at a number of more than three digits.
StatusOutcome ParseStatus(std::string_view reply, const std::function<void(const StatusError&)>& take);
