#include "apps/kvt/table/screen.h"

#include <csignal>

#include <poll.h>
#include <sys/ioctl.h>
#include <sys/signalfd.h>
#include <termios.h>
#include <unistd.h>

// Its macros have names like those of functions here and of Qt's.
#define NCURSES_NOMACROS
#define NCURSES_WIDECHAR 1
#include <curses.h>
#include <term.h>
#undef columns
#undef lines

namespace kvt
{

namespace
{

constexpr int ESCAPE = 27;
constexpr int ESCAPE_DELAY_ms = 25; // what follows at once belongs to a key that sends several

short pairOf(Concern concern)
{
    return static_cast<short>(static_cast<int>(concern) + 1);
}

bool beginColours()
{
    if (!qEnvironmentVariableIsEmpty("NO_COLOR") || !has_colors() || start_color() != OK)
        return false;
    const short background = use_default_colors() == OK ? -1 : COLOR_BLACK;
    const short foreground = background == -1 ? -1 : COLOR_WHITE;
    init_pair(pairOf(Concern::Bad), COLOR_RED, background);
    init_pair(pairOf(Concern::Stale), COLOR_YELLOW, background);
    init_pair(pairOf(Concern::Unknown), foreground, background);
    init_pair(pairOf(Concern::None), COLOR_GREEN, background);
    return true;
}

sigset_t sizeSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGWINCH);
    return signals;
}

// False for keys that mean nothing here.
bool translate(int status, wint_t code, Key *key)
{
    if (status == OK) {
        const bool erases = code == 8 || code == 127;
        const bool ends = code == '\n' || code == '\r';
        *key = erases ? Key::Backspace : ends ? Key::Enter : Key::Character;
        if (code == ESCAPE)
            *key = Key::Escape;
        return *key != Key::Character || code >= ' ';
    }
    static const struct {
        wint_t code;
        Key key;
    } KEYS[] = {{KEY_UP, Key::Up},        {KEY_DOWN, Key::Down},
                {KEY_PPAGE, Key::PageUp}, {KEY_NPAGE, Key::PageDown},
                {KEY_HOME, Key::Home},    {KEY_END, Key::End},
                {KEY_ENTER, Key::Enter},  {KEY_BACKSPACE, Key::Backspace}};
    for (const auto &known : KEYS) {
        *key = known.key;
        if (known.code == code)
            return true;
    }
    return false;
}

// False while the terminal is stopped, or its other end does not read.
bool takesOutput()
{
    pollfd terminal = {STDOUT_FILENO, POLLOUT, 0};
    return poll(&terminal, 1, 0) == 1 && (terminal.revents & POLLOUT) != 0;
}

} // namespace

bool outputIsScreen()
{
    int status = 0;
    if (isatty(STDOUT_FILENO) != 1 || setupterm(nullptr, STDOUT_FILENO, &status) != OK)
        return false;
    const bool movesCursor = cursor_address != nullptr;
    del_curterm(cur_term);
    return movesCursor;
}

Screen::Screen(std::function<void(Key, QChar)> pressed, std::function<void()> resized)
    : pressed_(std::move(pressed)), resized_(std::move(resized))
{
    watchSize();
}

void Screen::take()
{
    if (isTaken_)
        return;
    isTaken_ = true;
    initscr();
    cbreak();
    noecho();
    keypad(stdscr, TRUE);
    nodelay(stdscr, TRUE);
    set_escdelay(ESCAPE_DELAY_ms);
    curs_set(0);
    inColour_ = beginColours();
    if (isatty(STDIN_FILENO) != 1)
        return;
    keyNotifier_ = std::make_unique<QSocketNotifier>(STDIN_FILENO, QSocketNotifier::Read);
    connect(keyNotifier_.get(), &QSocketNotifier::activated, this, [this] { readKeys(); });
}

Screen::~Screen()
{
    keyNotifier_.reset();
    sizeNotifier_.reset();
    close(sizeSignal_);
    if (isTaken_) {
        ioctl(STDOUT_FILENO, TCXONC, TCOON); // Ctrl-S holds nobody up
        takesOutput() ? endwin() : reset_shell_mode();
    }
    const sigset_t signals = sizeSignals();
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

// As an event of the event loop. The library's own handler would only note it until a key comes.
void Screen::watchSize()
{
    const sigset_t signals = sizeSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    sizeSignal_ = signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
    sizeNotifier_ = std::make_unique<QSocketNotifier>(sizeSignal_, QSocketNotifier::Read);
    connect(sizeNotifier_.get(), &QSocketNotifier::activated, this, [this] { takeSize(); });
}

void Screen::takeSize()
{
    signalfd_siginfo signal = {};
    while (read(sizeSignal_, &signal, sizeof signal) > 0)
        continue;
    winsize size = {};
    if (!isTaken_ || ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row == 0 ||
        size.ws_col == 0)
        return;
    resizeterm(size.ws_row, size.ws_col);
    // Whatever the terminal made of the old lines goes.
    clearok(stdscr, TRUE);
    resized_();
}

int Screen::columns() const
{
    return getmaxx(stdscr);
}

int Screen::lines() const
{
    return getmaxy(stdscr);
}

void Screen::draw(const QVector<TableLine> &lines)
{
    if (!takesOutput())
        return;
    werase(stdscr);
    for (int y = 0; y < lines.size(); ++y) {
        wmove(stdscr, y, 0);
        for (const TableSpan &span : lines.at(y)) {
            const bool coloured = inColour_ && !span.isPlain;
            if (coloured)
                wattron(stdscr, COLOR_PAIR(pairOf(span.concern)));
            waddstr(stdscr, span.text.toLocal8Bit().constData());
            if (coloured)
                wattroff(stdscr, COLOR_PAIR(pairOf(span.concern)));
        }
    }
    wrefresh(stdscr);
}

void Screen::readKeys()
{
    wint_t code = 0;
    for (int status = wget_wch(stdscr, &code); status != ERR; status = wget_wch(stdscr, &code)) {
        Key key = Key::Character;
        if (translate(status, code, &key))
            pressed_(key, QChar(static_cast<ushort>(code)));
    }
    // A terminal that has gone is readable for ever.
    pollfd terminal = {STDIN_FILENO, POLLIN, 0};
    if (poll(&terminal, 1, 0) == 1 && (terminal.revents & (POLLHUP | POLLERR)) != 0)
        keyNotifier_->setEnabled(false);
}

} // namespace kvt
