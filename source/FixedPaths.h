#pragma once

/**
 * The paths are the same on every device: the program, its stand-in driver and the tests share
 * them. They are constants on purpose; nothing makes them configurable.
 */

/** The FIFO that takes the operator's commands. The program creates it and never removes it. */
inline constexpr char kControlFifoPath[] = "/etc/vx/simulator_control";

/** The sample buffer of the simulated ADC driver; takes blocks of sample records. */
inline constexpr char kSampleBufferPath[] = "/dev/adc-in";

/** The attributes of the simulated ADC driver's platform device. */
inline constexpr char kH2pPath[] = "/sys/devices/platform/vxadc-sim/h2p";
inline constexpr char kF2hPath[] = "/sys/devices/platform/vxadc-sim/f2h";
inline constexpr char kD2hPath[] = "/sys/devices/platform/vxadc-sim/d2h";
inline constexpr char kR2hPath[] = "/sys/devices/platform/vxadc-sim/r2h";

/** The simulated PME device; takes PME frames. */
inline constexpr char kPmeDevicePath[] = "/dev/pme-sim";
