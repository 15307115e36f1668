#pragma once

#include <string>
#include <vector>

#include "fakes/ScriptedPlatform.h"

/// Makes the scripted server report these products, each with device 0, with all the sensors that it can have.
inline void ConnectProducts(ScriptedPlatform& platform, const std::vector<int>& products) {
    std::string list;
    for (const int product : products) {
        list += (list.empty() ? "" : " ") + std::to_string(product);
        platform.server.AnswerPayload("listdev " + std::to_string(product), "0");
        platform.server.AnswerPayload("bl-param-list " + std::to_string(product),
                                      "74 87 88 107 108 109 110 119 132 189 206 209 237 238 259");
    }
    platform.server.AnswerPayload("listconprod", list);
}
