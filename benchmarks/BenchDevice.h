#pragma once

/**
 * Makes the driver's fixed paths in a mount namespace of this process: blocks go to /dev/null,
 * the attributes are regular files. Call once, before any thread is started; throws with one line
 * that says what is missing.
 */
void makeBenchDevice();
