#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

/// The commands' side of the command line. CommandLine.cpp alone knows the parser behind it, whose header takes seconds
/// to compile. All texts are UTF-8. What an option writes into must outlive the reading of the command line.

namespace CLI {
class App;
class Option;
}  // namespace CLI

/// What the chosen command runs; its result is the exit code.
using CommandRun = std::function<int()>;

/// Thrown by what a command runs, with the name of an argument that it cannot do without after all.
class MissingArgument : public std::runtime_error {
 public:
    using std::runtime_error::runtime_error;
};

/// An option, a flag or an argument, as its command's help shows it.
class CommandOption {
 public:
    explicit CommandOption(CLI::Option* option) : m_option(option) {}

    CommandOption Type(const std::string& word);  // what the help calls a value
    CommandOption OneOf(const std::vector<std::string>& words);
    CommandOption Required();
    CommandOption ShowDefault();  // what its variable holds now
    CommandOption Describe(const std::string& what);

 private:
    CLI::Option* m_option;
};

/// A command; the program is one, too. A copy stands for the same command. Help shows options and commands in the order
/// in which they are added. A name without dashes is that of an argument.
class Command {
 public:
    /// Keeps one text's value; what is wrong with the text, or nothing.
    using Take = std::function<std::string(const std::string&)>;

    /// `run` is set to what the chosen command runs.
    Command(CLI::App& app, CommandRun& run) : m_app(&app), m_run(&run) {}

    Command AddCommand(const std::string& name, const std::string& what);
    CommandOption AddFlag(const std::string& name, bool& value, const std::string& what);
    CommandOption AddOption(const std::string& name, std::string& value, const std::string& what);
    CommandOption AddOption(const std::string& name, std::vector<std::string>& values, const std::string& what);
    CommandOption AddOption(const std::string& name, std::filesystem::path& value, const std::string& what);
    CommandOption AddOption(const std::string& name, std::uint16_t& value, const std::string& what);
    CommandOption AddOption(const std::string& name, Take take, const std::string& what);
    /// May be repeated: each text is taken.
    CommandOption AddTexts(const std::string& name, Take take, const std::string& what);
    /// A whole number from `lowest` to `highest`.
    CommandOption AddNumber(const std::string& name, std::optional<int>& value, int lowest, int highest,
                            const std::string& what);

    /// An option that was added; of a name that none has, std::exception is thrown.
    CommandOption Find(const std::string& name);
    void Remove(const std::string& name);

    void Footer(const std::string& text);
    void Hide();  // from the help
    void Run(CommandRun run);
    bool IsChosen() const;  // once the command line is read

 private:
    CLI::App* m_app;
    CommandRun* m_run;
};
