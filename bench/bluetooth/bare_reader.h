// SPDX-License-Identifier: Apache-2.0
// What being woken costs by itself: a process that only waits for a socket and reads what is there,
// with the same system calls that a message of a bus takes. Nothing that listens can be cheaper.
#pragma once

namespace halvora {

/// Processor microseconds of this process a wake, at so many wakes a second for so many seconds;
/// below zero if it could not be measured.
double bareReaderCost(int wakesASecond, int seconds);

}  // namespace halvora
