#include "judge/LibraryCheckup.h"

#include <string>
#include <vector>

#include "judge/Checkup.h"
#include "model/SystemFacts.h"
#include "text/Words.h"

namespace {

Finding JudgeVersion(const SystemFacts& facts) {
    const Fact<std::string>& version = facts.library.version;
    if (!version) {
        return {"library version", Verdict::Note, "not known: " + version.unknown,
                "look at the properties of " + facts.library.file};
    }
    if (*version == facts.programVersion || *version == facts.programVersion + ".0") {
        return {"library version", Verdict::Ok, *version, ""};
    }
    return {"library version", Verdict::Note, *version + ", and this program is " + facts.programVersion,
            "when something is odd, take library and program of one release"};
}

}  // namespace

std::vector<Finding> ExamineLibrary(const SystemFacts& facts) {
    const LibraryFacts& library = facts.library;
    if (!library.found) {
        return {{"library", Verdict::Problem, "there is no " + library.file,
                 "put OkoLabBoldLine.dll beside oko-host, or name it with --library"}};
    }
    if (!library.loadError.empty()) {
        return {{"library", Verdict::Problem, library.loadError,
                 "it must be the library for 64-bit Windows, with read access for this user: install it again"}};
    }
    std::vector<Finding> findings{{"library", Verdict::Ok, "found and loaded: " + library.file, ""}};
    if (!library.missingExports.empty()) {
        findings.push_back({"library exports", Verdict::Problem, JoinWords(library.missingExports, "and") + " missing",
                            "this is no device plug-in: name the right file with --library"});
        return findings;
    }
    findings.push_back({"library exports", Verdict::Ok, "LibQueryPhysDevice and LibQueryInterface", ""});
    findings.push_back(JudgeVersion(facts));
    if (library.devices.empty()) {
        findings.push_back(
            {"devices", Verdict::Problem, "the library has none", "install the library again, or name the right one"});
    } else {
        findings.push_back({"devices", Verdict::Ok, JoinWords(library.devices, "and"), ""});
    }
    return findings;
}
