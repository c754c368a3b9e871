#pragma once

#include <QString>
#include <typeinfo>
#include <utility>

#include "CsvParser.h"
#include "ItemStore.h"

/**
 * One input value file: a line of thirteen fields separated by ";" becomes one item. Logs under
 * the name of its base.
 *
 * Owns its items. Playing changes only their time stamps.
 */
class InputValues : public CsvParser
{
public:
    InputValues();
    InputValues(const InputValues&) = default;
    InputValues& operator=(const InputValues&) = default;
    ~InputValues() override;

    /** Appends the item of the line; false after an ERROR message, and nothing is appended. */
    bool parseLine(QString line) override;

    /**
     * One field as a number in base 10; white space around it is accepted.
     * @return false after an ERROR message, and *value is unchanged.
     */
    bool parseUInt(QString text, quint32* value);
    bool parseInt(QString text, qint32* value);
    bool parseFloat(QString text, float* value);

    bool isEmpty() const { return mItems.isEmpty(); }

    /** Sets the read position to the first item. */
    void resetIterator();

    /**
     * The item at the read position, which then advances; null at the end, again and again.
     * The pointer stays valid for the object's life once the file is parsed.
     * Requires: resetIterator() was called.
     */
    InputValueItem* nextItem();

    /** True on the first call: a refused frequency is reported once. */
    bool isFirstRefusal() { return !std::exchange(mRefused, true); }

protected:
    /**
     * For a subclass that leaves parseLine() as it is: it names itself, and its files are read as
     * fast as those of this class.
     */
    explicit InputValues(const std::type_info& subclass);

    /** The fast path: reads the lines of ordinary files, as TakePlainLine says. */
    size_t takePlainLine(std::string_view lines);

    /** Releases the items read so far, for a subclass that reads a long file piece by piece. */
    void releaseItems() { mItems = ItemStore(); }

private:
    void reportField(const QString& text, const char* type,
                     const log4cxx::spi::LocationInfo& location) const;

    ItemStore mItems;
    bool mRefused = false; ///< its frequency, which has been reported
};
