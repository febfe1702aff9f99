#include "sim/line/LineTiming.h"

#include <cstdio>

namespace zol::sim::line {

std::string LineStats::Text() const {
    char text[320];
    std::snprintf(text, sizeof text,
                  "time_ms=%.3f packets=%llu requests=%llu replies=%llu dubs=%llu mutes=%llu unmutes=%llu "
                  "collisions=%llu timeouts=%llu corrupted=%llu",
                  lineTimeUs / 1000.0, (unsigned long long)packets, (unsigned long long)requests,
                  (unsigned long long)replies, (unsigned long long)dubs, (unsigned long long)mutes,
                  (unsigned long long)unmutes, (unsigned long long)collisions, (unsigned long long)timeouts,
                  (unsigned long long)corrupted);
    return text;
}

} // namespace zol::sim::line
