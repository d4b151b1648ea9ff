// Gives the compiler a reason to read TestHeaders.h on its own.
