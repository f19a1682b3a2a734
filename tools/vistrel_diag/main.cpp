#include "tools/vistrel_diag/console.h"
#include "tools/vistrel_diag/report.h"

int main() {
    Report::Section("MACHINE");
    return 0;
}
