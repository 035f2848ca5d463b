/* The public header alone, in C: strictly valid, the records laid out as hosts in other languages expect, and common
 * words left to the host. */
#include <plenar_sdk.h>
#include <stddef.h>

#include "record_layout.h"

int rgb;
int uint8;
int resultOk;
