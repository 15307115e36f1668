#pragma once

#include <string>
#include <vector>

#include "catalogue/ProductRecord.h"
#include "fakes/ScriptedPlatform.h"

/// A product of the catalogue with device 0, offering these parameters, none of which has been read.
inline ProductRecord ProductWith(int product, const std::vector<int>& parameters = {}) {
    ProductRecord record{product, {0}, {}};
    for (const int parameter : parameters) {
        record.m_params.push_back({parameter, {}});
    }
    return record;
}

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
