#include "waveform/ProgramMessages.h"

#include <log4cxx/appenderskeleton.h>
#include <log4cxx/logger.h>
#include <log4cxx/spi/loggingevent.h>

#include <memory>

namespace waveform {

namespace {
class CollectingAppender : public log4cxx::AppenderSkeleton
{
public:
    explicit CollectingAppender(std::vector<std::string>* messages) : mMessages(messages) {}

    void append(const log4cxx::spi::LoggingEventPtr& event,
                log4cxx::helpers::Pool& /*pool*/) override
    {
        mMessages->push_back(event->getMessage());
    }
    void close() override {}
    bool requiresLayout() const override { return false; }

private:
    std::vector<std::string>* mMessages;
};
} // namespace

ProgramMessages::ProgramMessages()
    : mLevelBefore(log4cxx::Logger::getRootLogger()->getLevel()),
      mAppender(new CollectingAppender(&mErrors))
{
    const log4cxx::LoggerPtr root = log4cxx::Logger::getRootLogger();
    root->setLevel(log4cxx::Level::getError());
    root->addAppender(mAppender);
}

ProgramMessages::~ProgramMessages()
{
    const log4cxx::LoggerPtr root = log4cxx::Logger::getRootLogger();
    root->removeAppender(mAppender);
    root->setLevel(mLevelBefore);
}

} // namespace waveform
