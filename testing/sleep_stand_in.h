#pragma once

/* Records a call of sleep(); non-zero when it is the one at which the program must end. */
int is_last_sleep(unsigned seconds);
