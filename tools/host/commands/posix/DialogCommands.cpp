#include "commands/Command.h"
#include "commands/Commands.h"

void AddDialogCommands(Command&) {}  // the dialogs are Windows'
