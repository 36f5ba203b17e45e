// How long work tells how far it is and learns that it should stop. Handed down by whoever started the work.
#pragma once

#include <functional>

// done and total are in any one unit of the work, 0 <= done <= total. False asks the work to stop with what
// it has. An empty function means that nobody watches.
using Progress = std::function<bool(double done, double total)>;
