// What the live table shows, and what keys do to it.
#include "apps/kvt/table/live_table.h"
#include "apps/kvt/table/printable.h"

#include <QtTest>

#include <algorithm>

using namespace kvt;

namespace
{

TableRow makeRow(const QString &tag, Concern concern = Concern::None,
                 const QString &address = QStringLiteral("1:5.2.1"))
{
    const bool good = concern == Concern::None;
    return {{tag, QStringLiteral("D"), address, QStringLiteral("1200"),
             good ? QStringLiteral("good") : QStringLiteral("failed"), QString(),
             QStringLiteral("12 ms"),
             good ? QStringLiteral("ok") : QStringLiteral("reply of another station (41)")},
            concern};
}

// One with an alarm.
TableRow alarmRow(const QString &tag, const QString &alarm, Concern concern, bool isUnacknowledged)
{
    TableRow row = makeRow(tag);
    row.cell(Column::Alarm) = alarm;
    row.alarmConcern = concern;
    row.isUnacknowledged = isUnacknowledged;
    return row;
}

QVector<TableRow> makeRows(int count)
{
    QVector<TableRow> rows;
    for (int i = 0; i < count; ++i)
        rows.append(makeRow(QStringLiteral("tag%1").arg(i)));
    return rows;
}

QString textOf(const TableLine &line)
{
    QString text;
    for (const TableSpan &span : line)
        text += span.text;
    return text;
}

// First word of each row that is shown, below a heading and above a footer.
QStringList shownTags(const LiveTable &table)
{
    QStringList tags;
    for (const TableLine &line : table.lines()) {
        const QString text = textOf(line);
        if (text.startsWith(QLatin1String("tag")) && text.at(3) != QLatin1Char(' '))
            tags.append(text.section(QLatin1Char(' '), 0, 0));
    }
    return tags;
}

QString footerOf(const LiveTable &table)
{
    return textOf(table.lines().last());
}

void type(LiveTable *table, const QString &text)
{
    for (const QChar character : text)
        QVERIFY(table->press(Key::Character, character) == TableWish::Nothing);
}

} // namespace

class TestLiveTable : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void linesFitEveryWidthAndHeight()
    {
        QVector<TableRow> rows = makeRows(30);
        rows.append(
            makeRow(QString(60, QLatin1Char('n')), Concern::Bad, QStringLiteral("255:255.15.255")));
        LiveTable table;
        table.setHeader({QString(300, QLatin1Char('h')), QStringLiteral("trouble")});
        table.setRows(rows);
        for (int columns = 1; columns <= 200; ++columns) {
            table.resize(columns, 1 + columns % 30);
            QCOMPARE(table.lines().size(), 1 + columns % 30);
            for (const TableLine &line : table.lines())
                QVERIFY(displayWidth(textOf(line)) <= columns);
        }
    }

    void tagValueAndQualityAreThereFrom40ColumnsOn()
    {
        QVector<TableRow> rows = {makeRow(QString(60, QLatin1Char('n')), Concern::Bad)};
        for (int columns = 40; columns <= 200; ++columns) {
            LiveTable table;
            table.setRows(rows);
            table.resize(columns, 10);
            const QString row = textOf(table.lines().at(1));
            QVERIFY2(row.contains(QRegularExpression(QStringLiteral("^n{10}.*  1200  failed"))),
                     qPrintable(row));
        }
    }

    void columnsAreLeftOutByImportance_data()
    {
        QTest::addColumn<QString>("heading");
        QTest::newRow("40") << "tag      value  quality";
        QTest::newRow("50") << "tag      value  quality     result";
        QTest::newRow("56") << "tag      value  quality          age  result";
        QTest::newRow("64") << "tag   address     value  quality          age  result";
        QTest::newRow("72") << "tag   area  address     value  quality          age  result";
    }

    void columnsAreLeftOutByImportance()
    {
        QFETCH(QString, heading);
        LiveTable table;
        table.setRows(makeRows(3));
        table.resize(QByteArray(QTest::currentDataTag()).toInt(), 10);
        QCOMPARE(textOf(table.lines().at(0)).trimmed(), heading);
    }

    void aLongNameIsShownWholeWhereThereIsRoom()
    {
        LiveTable table;
        table.setRows({makeRow(QStringLiteral("pump_station_north_setpoint"))});
        for (const int columns : {45, 60}) {
            table.resize(columns, 5);
            const QString row = textOf(table.lines().at(1));
            QVERIFY2(row.startsWith(QLatin1String("pump_station_north_set~  ")), qPrintable(row));
        }
        table.resize(120, 5);
        QVERIFY(textOf(table.lines().at(1))
                    .startsWith(QLatin1String("pump_station_north_setpoint  D ")));
    }

    void aLongValueIsShownWholeWhereThereIsRoom()
    {
        const QString value = QString::fromUtf8("21.4 \u00b0C (214)");
        QVector<TableRow> rows = {makeRow(QStringLiteral("water"))};
        const QString usual = rows.first().cell(Column::Value);
        rows.first().cell(Column::Value) = value;
        LiveTable table;
        table.setRows(rows);
        for (int columns = 45; columns <= 200; ++columns) {
            table.resize(columns, 5);
            const QString row = textOf(table.lines().at(1));
            QVERIFY2(row.contains(value + QLatin1String("  good")), qPrintable(row));
        }
        const int end = textOf(table.lines().at(1)).indexOf(QLatin1String("good"));
        rows.first().cell(Column::Value) = usual; // the columns stay where they are
        table.setRows(rows);
        QCOMPARE(textOf(table.lines().at(1)).indexOf(QLatin1String("good")), end);
    }

    void aRawValueIsThereAsAWholeOrNotAtAll()
    {
        QVector<TableRow> rows = {makeRow(QStringLiteral("speed_of_the_pump"))};
        rows.first().cell(Column::Value) = QStringLiteral("1000.0 1/min (10000)");
        LiveTable table;
        table.setRows(rows);
        for (int columns = 46; columns <= 80; ++columns) {
            table.resize(columns, 5);
            const QString row = textOf(table.lines().at(1));
            QVERIFY2(row.contains(QLatin1String("1000.0 1/min~  good")) ||
                         row.contains(QLatin1String("1000.0 1/min (10000)  good")),
                     qPrintable(row));
        }
    }

    void aValueOfAnyLengthLeavesTheQualityThere()
    {
        QVector<TableRow> rows = {makeRow(QStringLiteral("doors"))};
        rows.first().cell(Column::Value) = QString(60, QLatin1Char('v'));
        LiveTable table;
        table.setRows(rows);
        for (int columns = 40; columns <= 200; ++columns) {
            table.resize(columns, 5);
            const QString row = textOf(table.lines().at(1));
            QVERIFY2(row.contains(QLatin1String("  good")), qPrintable(row));
            QVERIFY(columns < 200 || row.contains(QString(60, QLatin1Char('v'))));
        }
    }

    // Eight rows have room.
    void keysScroll()
    {
        LiveTable table;
        table.setRows(makeRows(20));
        table.resize(80, 10);
        QCOMPARE(shownTags(table).first(), QStringLiteral("tag0"));
        QCOMPARE(shownTags(table).size(), 8);
        const struct {
            Key key;
            const char *first;
            const char *last;
        } steps[] = {{Key::Up, "tag0", "tag7"},        {Key::Down, "tag1", "tag8"},
                     {Key::PageDown, "tag8", "tag15"}, {Key::PageDown, "tag12", "tag19"},
                     {Key::Down, "tag12", "tag19"},    {Key::PageUp, "tag5", "tag12"},
                     {Key::Home, "tag0", "tag7"},      {Key::End, "tag12", "tag19"},
                     {Key::Up, "tag11", "tag18"}};
        for (const auto &step : steps) {
            QVERIFY(table.press(step.key) == TableWish::Nothing);
            QCOMPARE(shownTags(table).first(), QLatin1String(step.first));
            QCOMPARE(shownTags(table).last(), QLatin1String(step.last));
        }
        QVERIFY2(footerOf(table).startsWith(QLatin1String("12-19 of 20")),
                 qPrintable(footerOf(table)));
    }

    void scrollingStaysInsideAfterAResize()
    {
        LiveTable table;
        table.setRows(makeRows(20));
        table.resize(80, 10);
        table.press(Key::End);
        table.resize(80, 24);
        QCOMPARE(shownTags(table).size(), 20);
        table.resize(80, 5);
        QCOMPARE(shownTags(table).first(), QStringLiteral("tag0"));
        table.press(Key::End);
        table.setRows(makeRows(2));
        QCOMPARE(shownTags(table).size(), 2);
    }

    void badRowsComeFirst()
    {
        LiveTable table;
        table.setRows({makeRow("tag0"), makeRow("tag1", Concern::Unknown),
                       makeRow("tag2", Concern::Bad), makeRow("tag3", Concern::Stale),
                       makeRow("tag4"), makeRow("tag5", Concern::Bad)});
        table.resize(80, 10);
        QCOMPARE(shownTags(table).join(QLatin1Char(' ')),
                 QStringLiteral("tag2 tag5 tag3 tag1 tag0 tag4"));
        QVERIFY(footerOf(table).contains(QLatin1String("1-6 of 6, 4 not good")));
    }

    void theOrderOfTheListCanBeHad()
    {
        LiveTable table;
        table.setRows({makeRow("tag0"), makeRow("tag1", Concern::Bad)});
        table.resize(80, 10);
        type(&table, QStringLiteral("s"));
        QCOMPARE(shownTags(table), QStringList({"tag0", "tag1"}));
        type(&table, QStringLiteral("s"));
        QCOMPARE(shownTags(table), QStringList({"tag1", "tag0"}));
        QVERIFY(table.press(Key::Character, QLatin1Char('q')) == TableWish::End);
    }

    void aFilterLeavesWhatContainsIt()
    {
        LiveTable table;
        table.setRows({makeRow("tagPump"), makeRow("tagValve", Concern::Bad, "7:1.0.0"),
                       makeRow("tagPump2")});
        table.resize(80, 10);
        type(&table, QStringLiteral("/PUMP"));
        QCOMPARE(shownTags(table), QStringList({"tagPump", "tagPump2"}));
        QVERIFY(footerOf(table).startsWith(QLatin1String("/PUMP_")));
        table.press(Key::Enter);
        QVERIFY(footerOf(table).contains(QLatin1String("filter \"PUMP\"")));
        type(&table, QStringLiteral("/"));
        for (int i = 0; i < 9; ++i)
            table.press(Key::Backspace);
        QCOMPARE(shownTags(table).size(), 3);
        type(&table, QStringLiteral("7:1"));
        QCOMPARE(shownTags(table), QStringList("tagValve"));
        table.press(Key::Escape);
        QCOMPARE(shownTags(table).size(), 3);
        type(&table, QStringLiteral("/another station"));
        QCOMPARE(shownTags(table), QStringList("tagValve"));
        table.press(Key::Enter);
        table.press(Key::Escape);
        QCOMPARE(shownTags(table).size(), 3);
    }

    // Rows would come and go with every change.
    void valuesAreNotFiltered()
    {
        LiveTable table;
        table.setRows(makeRows(3));
        table.resize(80, 10);
        type(&table, QStringLiteral("/1200"));
        QCOMPARE(shownTags(table), QStringList());
    }

    void keysOfAFilterAreText()
    {
        LiveTable table;
        table.setRows({makeRow("tagq/s")});
        table.resize(80, 10);
        type(&table, QStringLiteral("/q/s"));
        QCOMPARE(shownTags(table), QStringList("tagq/s"));
    }

    void nothingToShowIsSaid()
    {
        LiveTable table;
        table.setRows(makeRows(3));
        table.resize(80, 10);
        type(&table, QStringLiteral("/nothing like it"));
        table.press(Key::Enter);
        QVERIFY(footerOf(table).startsWith(QLatin1String("none of 3, filter")));
        table.press(Key::End);
        table.press(Key::PageUp);
        QCOMPARE(shownTags(table), QStringList());
    }

    void theHeaderCannotSteerTheTerminal()
    {
        LiveTable table;
        table.setHeader({QStringLiteral("\x1b[2J")});
        table.setRows(makeRows(1));
        table.resize(80, 10);
        QVERIFY(textOf(table.lines().first()).startsWith(QLatin1String("\\x1b[2J")));
    }

    void alarmsHaveAColumnWhereThereAreAny()
    {
        LiveTable table;
        table.setRows({makeRow("tag0"), alarmRow("tag1", "normal", Concern::None, false)});
        table.resize(100, 10);
        QCOMPARE(textOf(table.lines().at(0)).simplified(),
                 QString("tag area address value quality alarm age result"));
        table.setRows(makeRows(2));
        QVERIFY(!textOf(table.lines().at(0)).contains(QLatin1String("alarm")));
    }

    // The longest there is, beside the longest of everything else.
    void theWholeAlarmIsThereFrom55ColumnsOn()
    {
        LiveTable table;
        TableRow row =
            alarmRow(QString(60, QLatin1Char('n')), "hihi suppressed", Concern::Unknown, false);
        row.cell(Column::Address) = QStringLiteral("255:255.15.255");
        row.cell(Column::Quality) = QStringLiteral("never read");
        table.setRows({row});
        for (int columns = 55; columns <= 200; ++columns) {
            table.resize(columns, 10);
            QVERIFY2(textOf(table.lines().at(1)).contains("  never read  hihi suppressed"),
                     qPrintable(QString::number(columns)));
        }
        table.resize(80, 10);
        QCOMPARE(textOf(table.lines().at(0)).simplified(),
                 QString("tag value quality alarm age result"));
    }

    void alarmsComeFirstAndAreCounted()
    {
        LiveTable table;
        table.setRows({alarmRow("tag0", "normal", Concern::None, false),
                       alarmRow("tag1", "hi acked", Concern::Stale, false),
                       alarmRow("tag2", "lo unack", Concern::Bad, true), makeRow("tag3")});
        table.resize(100, 10);
        QCOMPARE(shownTags(table), QStringList({"tag2", "tag1", "tag0", "tag3"}));
        QVERIFY2(footerOf(table).startsWith("1-4 of 4, 1 unacknowledged  q end, a acknowledge, "),
                 qPrintable(footerOf(table)));
        table.setRows({alarmRow("tag0", "hi acked", Concern::Stale, false)});
        QVERIFY(footerOf(table).startsWith("1-1 of 1  q end, / filter, "));
    }

    void aKeyAcknowledgesWhatTheFilterLeaves()
    {
        LiveTable table;
        table.setRows({alarmRow("tagPump", "returned", Concern::Stale, true),
                       alarmRow("tagOven", "hi unack", Concern::Bad, true),
                       alarmRow("tagFan", "hi acked", Concern::Stale, false)});
        table.resize(80, 10);
        QVERIFY(table.press(Key::Character, QLatin1Char('a')) == TableWish::Acknowledge);
        QVector<int> all = table.unacknowledged();
        std::sort(all.begin(), all.end());
        QCOMPARE(all, QVector<int>({0, 1}));
        type(&table, QStringLiteral("/pump"));
        table.press(Key::Enter);
        QCOMPARE(table.unacknowledged(), QVector<int>({0}));
        type(&table, QStringLiteral("/a")); // text, as long as it is typed
        table.press(Key::Escape);
        type(&table, QStringLiteral("/hi "));
        table.press(Key::Enter);
        QCOMPARE(table.unacknowledged(), QVector<int>({1}));
    }

    void onlyTheQualityIsColoured()
    {
        LiveTable table;
        table.setRows({makeRow("tag0", Concern::Bad)});
        table.resize(80, 10);
        QStringList coloured;
        for (const TableLine &line : table.lines())
            for (const TableSpan &span : line)
                if (!span.isPlain)
                    coloured.append(span.text.trimmed());
        QCOMPARE(coloured, QStringList("failed"));
    }

    void anAlarmIsColouredByItself()
    {
        LiveTable table;
        table.setRows({alarmRow("tag0", "hi unack", Concern::Bad, true)});
        table.resize(80, 10);
        QVector<Concern> concerns;
        const TableLine row = table.lines().at(1);
        for (const TableSpan &span : row)
            if (!span.isPlain)
                concerns.append(span.concern);
        QCOMPARE(concerns, QVector<Concern>({Concern::None, Concern::Bad}));
    }
};

QTEST_GUILESS_MAIN(TestLiveTable)
#include "tst_live_table.moc"
