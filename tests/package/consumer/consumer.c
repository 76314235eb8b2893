#include <quastel_core.h>
#include <stdio.h>

int main(void) { return puts(qs_version()) < 0; }
