#include "page/Report.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "keep/CsvReader.h"
#include "page/Assets.h"
#include "page/ReportData.h"

namespace {

/// What stands between two texts that begins at or after `from`, and where it ends with them.
struct Part {
    std::size_t begin = std::string_view::npos;
    std::size_t end = std::string_view::npos;
    std::string_view inside;
};

Part Find(std::string_view text, std::string_view before, std::string_view after, std::size_t from) {
    const std::size_t begin = text.find(before, from);
    if (begin == std::string_view::npos) {
        return {};
    }
    const std::size_t inside = begin + before.size();
    const std::size_t end = text.find(after, inside);
    return {begin, end + after.size(), text.substr(inside, end - inside)};
}

std::string_view AssetBytes(std::string_view name) {
    const Asset* const asset = FindAsset(name);
    return asset == nullptr ? std::string_view{} : asset->bytes;
}

/// Takes every such part out of the page; gives the bytes of the files that they name, each between two texts.
std::string TakeOut(std::string& page, std::string_view before, std::string_view after, std::string_view open,
                    std::string_view close) {
    std::string files;
    for (Part part = Find(page, before, after, 0); part.begin != std::string_view::npos;
         part = Find(page, before, after, part.begin)) {
        files.append(open).append(AssetBytes(part.inside)).append(close);
        page.erase(part.begin, part.end - part.begin);
    }
    return files;
}

void InsertBefore(std::string& page, std::string_view place, const std::string& text) {
    page.insert(page.rfind(place), text);
}

/// So that nothing in it ends the script that it stands in.
std::string ForScript(const std::string& json) {
    std::string text;
    text.reserve(json.size());
    for (const char character : json) {
        if (character == '<') {
            text += "\\u003c";
        } else {
            text += character;
        }
    }
    return text;
}

/// One file can have its scripts and styles nowhere but inside; still it may ask nobody for anything.
constexpr std::string_view kPolicy =
    "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; script-src 'unsafe-inline'; "
    "style-src 'unsafe-inline'; img-src data:; form-action 'none'; base-uri 'none'\">\n";

}  // namespace

std::string MakeReport(const Log& unsorted, std::string_view name) {
    const Log log = SortedByTime(unsorted);
    std::vector<int> decimals;
    decimals.reserve(log.columns.size());
    for (const LogColumns& columns : log.columns) {
        decimals.push_back(DecimalsOf(columns.current, columns.target));
    }

    std::string page(AssetBytes("page.html"));
    const std::string styles = TakeOut(page, "<link rel=\"stylesheet\" href=\"", "\">\n", "<style>\n", "</style>\n");
    const std::string scripts = TakeOut(page, "<script src=\"", "\" defer></script>\n", "<script>\n", "</script>\n");
    const std::string icon = TakeOut(page, "<link rel=\"icon\" id=\"icon\" href=\"", "\">\n", "", "");
    page.insert(page.find("<meta name=\"viewport\""), kPolicy);
    InsertBefore(page, "</head>",
                 styles + "<link rel=\"icon\" id=\"icon\" href=\"data:image/svg+xml;base64," + Base64(icon) + "\">\n");
    // The data stands before the scripts: they read it at once.
    InsertBefore(page, "</body>",
                 "<script type=\"application/json\" id=\"report-head\">" + ForScript(ReportHead(log, name, decimals)) +
                     "</script>\n<script type=\"text/plain\" id=\"report-data\">" + ReportValues(log, decimals) +
                     "</script>\n" + scripts);
    return page;
}
