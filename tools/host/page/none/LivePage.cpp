#include "page/LivePage.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "model/Event.h"
#include "model/Snapshot.h"

// A program that was built without the page's libraries.

struct LivePage::Impl {};

LivePage::LivePage(const Options&, SetTarget) {}
LivePage::~LivePage() = default;

std::optional<std::string> LivePage::Start() {
    return "this oko-host was built without its page: build it with -DOKO_PAGE=ON";
}

void LivePage::Stop() {}
void LivePage::Publish(const Snapshot&) {}
void LivePage::Publish(const Event&) {}
void LivePage::TargetDone(std::uint64_t, std::optional<double>) {}
std::string LivePage::Url() const { return {}; }
std::string LivePage::UrlWithToken() const { return {}; }
