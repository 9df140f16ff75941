#include "empty_call.h"

void empty_log(const char *format, ...) { (void)format; }
