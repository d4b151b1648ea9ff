// The tables of the interface's messages, which are made in C.
#include <wlr-output-management-client-protocol.h>

extern "C" {
#include <wlr-output-management-protocol.inc>
}
