#pragma once

#include "model/Moment.h"

/// This instant. Any thread.
Moment Now();
