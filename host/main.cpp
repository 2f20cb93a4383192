#include "host/command_line.h"

int main(int count, char** arguments) { return host::RunCommandLine(count, arguments); }
