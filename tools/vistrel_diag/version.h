// The tool's version; also read by the resource compiler.
#define VISTREL_DIAG_VERSION "1.0"
#define VISTREL_DIAG_VERSION_NUMBERS 1, 0, 0, 0
