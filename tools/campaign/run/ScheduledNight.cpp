#include "run/ScheduledNight.h"

namespace run {

void ScheduledNight::begin(const Moment& now)
{
    mSchedule.setTime(now);
    mSchedule.begin();
    tick(now);
}

void ScheduledNight::resume(const ResumePoint& point,
                            const std::map<std::string, std::string>& environment,
                            const Moment& now)
{
    mSchedule.setTime(now);
    mSchedule.resume(point, environment);
    tick(now);
}

} // namespace run
