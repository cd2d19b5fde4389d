/** @file
 * What the two halves of this example share. */
#ifndef FUNCTION_TABLE_H
#define FUNCTION_TABLE_H

#include <zvwf.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Fills the cursor, prints what it holds and frees it. The program's result: 0 for success. */
int fillAndPrint(ZvwfHandle* cursor);

#ifdef __cplusplus
}
#endif

#endif
