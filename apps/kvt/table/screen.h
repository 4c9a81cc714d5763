// A terminal that is drawn on and sends keys.
#ifndef KVT_APPS_KVT_TABLE_SCREEN_H
#define KVT_APPS_KVT_TABLE_SCREEN_H

#include "apps/kvt/table/live_table.h"

#include <QObject>
#include <QSocketNotifier>

#include <functional>
#include <memory>

namespace kvt
{

/// True when standard output is a terminal whose cursor can be moved, which a dumb one's cannot.
bool outputIsScreen();

/// The terminal at standard output, taken from the first drawing on and given back at the end as
/// it was. Colours unless NO_COLOR is set. One at a time, in the thread of the event loop; make it
/// before any other thread, so that all of them leave the signal of a new size alone.
class Screen : public QObject
{
public:
    /// `pressed` is called for each key, `resized` after the terminal has another size.
    Screen(std::function<void(Key, QChar)> pressed, std::function<void()> resized);
    ~Screen() override;

    /// Takes the terminal, once; it must be one by outputIsScreen.
    void take();
    bool isTaken() const { return isTaken_; }

    /// Size in characters, above 0; while it is taken.
    int columns() const;
    int lines() const;

    /// Shows the lines from the top, and nothing beside them.
    void draw(const QVector<TableLine> &lines);

private:
    void watchSize();
    void takeSize();
    void readKeys();

    std::function<void(Key, QChar)> pressed_;
    std::function<void()> resized_;
    bool isTaken_ = false;
    bool inColour_ = false;
    int sizeSignal_ = -1;
    std::unique_ptr<QSocketNotifier> sizeNotifier_;
    std::unique_ptr<QSocketNotifier> keyNotifier_;
};

} // namespace kvt

#endif
