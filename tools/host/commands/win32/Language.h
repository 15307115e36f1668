#pragma once

#include <string>
#include <vector>

class Library;

/// The languages that the plug-in's dialogs exist in, as the command line names them: "cs", "de", "en", ...
std::vector<std::string> DialogLanguages();

/// Asks the system to choose this language's dialogs for the calling thread. False where it does not: some systems let
/// no program choose, and go by their own language.
bool ChooseDialogLanguage(const Library& library, const std::string& language);
