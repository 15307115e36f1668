#pragma once

#include "base/Text.h"

/// A command as it goes on the wire: at most 63 characters and a terminator that is not sent.
using CommandText = BoundedText<char, 64>;
