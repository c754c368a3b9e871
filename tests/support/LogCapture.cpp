#include "LogCapture.h"

#include <gtest/gtest.h>
#include <log4cxx/appenderskeleton.h>
#include <log4cxx/helpers/exception.h>
#include <log4cxx/logger.h>
#include <log4cxx/spi/loggingevent.h>

#include <functional>
#include <utility>

#include "TrackObject.h"

namespace {
class CallingAppender : public log4cxx::AppenderSkeleton
{
public:
    using Handler = std::function<void(const LogEvent&)>;

    explicit CallingAppender(Handler handler) : mHandler(std::move(handler)) {}

    void append(const log4cxx::spi::LoggingEventPtr& event, log4cxx::helpers::Pool&) override
    {
        const log4cxx::spi::LocationInfo& location = event->getLocationInformation();
        mHandler({event->getLevel()->toString(), event->getMessage(),
                  event->getLoggerName() + " " + location.getFileName() + " " +
                      location.getClassName() + "::" + location.getMethodName()});
    }
    void close() override {}
    bool requiresLayout() const override { return false; }

private:
    Handler mHandler;
};
} // namespace

LogCapture::LogCapture()
    : mErrorsBefore(TrackObject::sErrorCounter), mFatalsBefore(TrackObject::sFatalCounter)
{
    mAppender = log4cxx::AppenderPtr(new CallingAppender([this](const LogEvent& event) {
        EXPECT_EQ(errors() + fatals(), mErrorsLogged + mFatalsLogged) << "a report counts after it";
        mErrorsLogged += event.mLevel == "ERROR" ? 1 : 0;
        mFatalsLogged += event.mLevel == "FATAL" ? 1 : 0;
        if (mFull) {
            throw log4cxx::helpers::IOException();
        }
        mEvents.push_back(event);
    }));
    log4cxx::Logger::getRootLogger()->setLevel(log4cxx::Level::getAll());
    log4cxx::Logger::getRootLogger()->addAppender(mAppender);
}

LogCapture::~LogCapture()
{
    log4cxx::Logger::getRootLogger()->removeAppender(mAppender);
    EXPECT_EQ(errors(), mErrorsLogged) << "ERROR reports counted and logged";
    EXPECT_EQ(fatals(), mFatalsLogged) << "FATAL reports counted and logged";
}

Lines LogCapture::take()
{
    Lines lines;
    for (const LogEvent& event : mEvents) {
        lines.push_back(event.mLevel + " " + event.mText);
    }
    mEvents.clear();
    return lines;
}

Lines LogCapture::takeFrom(const std::string& origin)
{
    for (const LogEvent& event : mEvents) {
        EXPECT_EQ(event.mOrigin, origin);
    }
    return take();
}

int LogCapture::errors() const
{
    return TrackObject::sErrorCounter - mErrorsBefore;
}

int LogCapture::fatals() const
{
    return TrackObject::sFatalCounter - mFatalsBefore;
}
