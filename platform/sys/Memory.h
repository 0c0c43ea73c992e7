#pragma once

namespace sys {

/// Lets the C library ask the system for memory in large steps, once, when the process begins.
/// Otherwise it does so page by page in each thread, thousands of times for the files of a large
/// repository. What is not used takes none.
void takeMemoryInLargeSteps();

}  // namespace sys
