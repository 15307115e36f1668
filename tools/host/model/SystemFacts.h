#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// What a computer tells about the library, the server and the incubator's port. Nothing here is judged.

/// Something that may not be known here; `unknown` says why then.
template <class T>
struct Fact {
    std::optional<T> value;
    std::string unknown = "it was not asked";

    static Fact Of(T known) { return {std::move(known), {}}; }
    static Fact Unknown(std::string why) { return {std::nullopt, std::move(why)}; }

    explicit operator bool() const { return value.has_value(); }
    const T& operator*() const { return *value; }    // NOLINT(bugprone-unchecked-optional-access): the caller looked
    const T* operator->() const { return &*value; }  // NOLINT(bugprone-unchecked-optional-access): the caller looked
};

struct LibraryFacts {
    std::string file;
    bool found = false;
    std::string loadError;                    // empty: it was loaded, and what follows is known
    std::vector<std::string> missingExports;  // of the two that a device plug-in has
    Fact<std::string> version;                // "1.0.0.0"
    std::vector<std::string> devices;         // by name
};

/// The server in the list of installed programs that the library searches.
struct ServerInstallation {
    bool entered = false;
    bool inOtherList = false;  // only in the list that the library leaves out
    std::string folder;        // as it is entered
    std::string program;       // what the library would start there; empty: nothing
};

struct RunningProgram {
    std::uint32_t id = 0;
    std::string name;  // without the folder; empty where the system does not tell
};

/// Whether a program of that file name may be the server: "OKO-Control....exe", in whatever case.
bool IsServerName(std::string_view name);

/// Who has UDP port 60000.
struct PortHolder {
    bool taken = false;
    RunningProgram program;
};

enum class AnswerKind { Reply, Silence, Refused };  // Refused: the system says that nobody listens

/// What one command to the server came to.
struct ServerAnswer {
    AnswerKind kind = AnswerKind::Silence;
    std::string reply;
    double seconds = 0.0;  // until the reply, or of waiting
};

/// A value of the registry that switches something in the library. It takes a 32-bit number alone.
struct RegistrySwitch {
    enum class Kind { Absent, Number, OtherType };
    Kind kind = Kind::Absent;
    std::uint32_t number = 0;
};

struct LibrarySwitches {
    RegistrySwitch logCommunication;
    RegistrySwitch replyTimeout;  // ms
};

struct SettingsFacts {
    std::string file;
    bool found = false;
    std::optional<int> port;  // COM; of the file
    std::string alarms;       // the tolerances, as the file has them
};

struct SystemFacts {
    bool incubator = true;         // what is wanted: it, or the simulator
    std::optional<int> askedPort;  // of the command line
    std::string programVersion;    // "1.0.0"
    LibraryFacts library;
    Fact<ServerInstallation> installation;
    Fact<std::vector<RunningProgram>> servers;  // those that run
    Fact<PortHolder> portHolder;
    Fact<ServerAnswer> products;           // "listprod"
    Fact<ServerAnswer> connectedProducts;  // "listconprod"
    Fact<std::vector<int>> serialPorts;    // COM
    SettingsFacts settings;
    Fact<LibrarySwitches> switches;
};
