#include "WriteReport.h"

#include <iostream>
#include <utility>

bool WriteReport::acceptsPath(const OdString&) const {
    return true;
}

void WriteReport::reportResult(Expected<void> result) const {
    if (result)
        std::cout << subject_ << ": written\n";
    else
        outcome_ = std::move(result);
}
