// The columns about how a tag is watched.
#include "tags/tag_list.h"
#include "tags/tag_watch.h"

#include <QtTest>

using namespace kvt;

namespace
{

const QByteArray HEADER = "name,area,address,station,type,scale,low,high,raw_low,raw_high,labels,"
                          "bits,interval,deadband,alarm,lolo,lo,hi,hihi,hysteresis,on_delay,"
                          "off_delay,priority,alarm_text\n";

/// Returns a list of one tag: its type and, by their names, what else it says.
QByteArray listOf(const QString &type, const QString &fields)
{
    QStringList row;
    const QStringList titles = QString::fromLatin1(HEADER.trimmed()).split(QLatin1Char(','));
    for (const QString &title : titles) {
        QString text;
        for (const QString &field : fields.split(QLatin1Char(' '), Qt::SkipEmptyParts))
            if (field.section(QLatin1Char('='), 0, 0) == title)
                text =
                    field.section(QLatin1Char('='), 1).replace(QLatin1Char('_'), QLatin1Char(' '));
        row.append(text);
    }
    row[0] = QStringLiteral("a");
    row[1] = QStringLiteral("D");
    row[2] = QStringLiteral("5.2.1");
    row[3] = QStringLiteral("1");
    row[4] = type;
    return HEADER + row.join(QLatin1Char(',')).toUtf8() + '\n';
}

QString shown(const QVector<TagError> &errors)
{
    QStringList texts;
    for (const TagError &error : errors)
        texts.append(formatTagError(QStringLiteral("t"), error));
    return texts.join(QLatin1Char('\n'));
}

} // namespace

class TestTagWatch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void nothingSaidIsNothingWatched()
    {
        const TagListResult list = parseTagList(listOf(QStringLiteral("u16"), QString()));
        QCOMPARE(shown(list.errors + list.warnings), QString());
        const TagWatch watch = watchOf(list.tags.at(0));
        QCOMPARE(watch.interval_ns, qint64(0));
        QVERIFY(!watch.deadband.has_value());
        QVERIFY(!watch.alarm.has_value());
    }

    void allThatIsSaidIsRead()
    {
        const TagListResult list = parseTagList(listOf(
            QStringLiteral("s16"),
            QStringLiteral("low=0 high=50 raw_low=0 raw_high=1000 interval=100ms deadband=2% "
                           "lolo=1 lo=2.5 hi=40 hihi=45 hysteresis=0.5 on_delay=2s off_delay=1min "
                           "priority=High alarm_text=too_hot")));
        QCOMPARE(shown(list.errors + list.warnings), QString());
        const TagWatch watch = watchOf(list.tags.at(0));
        QCOMPARE(watch.interval_ns, qint64(100000000));
        QCOMPARE(intervalOf_ns(list.tags.at(0)), qint64(100000000));
        QCOMPARE(watch.deadband.value_or(-1), 1.0);
        QVERIFY(watch.alarm.has_value());
        QCOMPARE(watch.alarm->lolo.value_or(-1), 1.0);
        QCOMPARE(watch.alarm->lo.value_or(-1), 2.5);
        QCOMPARE(watch.alarm->hi.value_or(-1), 40.0);
        QCOMPARE(watch.alarm->hihi.value_or(-1), 45.0);
        QCOMPARE(watch.alarm->hysteresis, 0.5);
        QCOMPARE(watch.alarm->onDelay_ns, qint64(2000000000));
        QCOMPARE(watch.alarm->offDelay_ns, qint64(60000000000));
        QCOMPARE(watch.alarm->priority, AlarmPriority::High);
        QCOMPARE(watch.alarm->text, QString("too hot"));
        QVERIFY(!watch.alarm->bits.has_value());
        const TagListResult again = parseTagList(formatTagList(list.tags));
        QCOMPARE(again.tags, list.tags);
    }

    void aNameCanBeAnAlarm_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("fields");
        QTest::addColumn<quint64>("mask");
        QTest::addColumn<quint64>("bits");
        QTest::newRow("label") << "u16"
                               << "labels=0=ok;7=fault alarm=Fault" << ~quint64(0) << quint64(7);
        QTest::newRow("bit") << "hex"
                             << "bits=0=door;3=dry_run alarm=dry_run" << quint64(8) << quint64(8);
        QTest::newRow("two bits") << "hex"
                                  << "bits=0=door;3=dry alarm=bit_5" << quint64(32) << quint64(32);
        QTest::newRow("value") << "bool"
                               << "alarm=1" << ~quint64(0) << quint64(1);
        QTest::newRow("value 0") << "bit:3"
                                 << "alarm=0" << ~quint64(0) << quint64(0);
    }

    void aNameCanBeAnAlarm()
    {
        QFETCH(QString, type);
        QFETCH(QString, fields);
        QFETCH(quint64, mask);
        QFETCH(quint64, bits);
        const TagListResult list = parseTagList(listOf(type, fields));
        QCOMPARE(shown(list.errors + list.warnings), QString());
        const std::optional<AlarmRule> rule = watchOf(list.tags.at(0)).alarm;
        QVERIFY(rule.has_value() && rule->bits.has_value());
        QCOMPARE(rule->bits->mask, mask);
        QCOMPARE(rule->bits->bits, bits);
    }

    void wrongFieldsAreNamed_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("fields");
        QTest::addColumn<QString>("error");
        const auto row = [](const char *name, const char *type, const char *fields,
                            const char *error) {
            QTest::newRow(name) << QString(QLatin1String(type)) << QString(QLatin1String(fields))
                                << QString(QLatin1String(error));
        };
        row("interval", "u16", "interval=100",
            "t:2: column 13 \"interval\": \"100\" is no interval: a number with ms, s, min or h, "
            "from 10 ms to a day");
        row("too short", "u16", "interval=9ms",
            "t:2: column 13 \"interval\": \"9ms\" is no interval: a number with ms, s, min or h, "
            "from 10 ms to a day");
        row("deadband", "u16", "deadband=much",
            "t:2: column 14 \"deadband\": \"much\" is not a number");
        row("deadband without a range", "u16", "deadband=2%",
            "t:2: column 14 \"deadband\": a percentage needs a range: low and high, or min and "
            "max");
        row("deadband of a text", "string:4", "deadband=2",
            "t:2: column 14 \"deadband\": values of type string have none");
        row("no such label", "u16", "labels=0=ok;7=fault alarm=failure",
            "t:2: column 15 \"alarm\": \"failure\" is no value, label or bit of this tag");
        row("no bit", "hex", "bits=0=door alarm=none",
            "t:2: column 15 \"alarm\": \"none\" names no bit");
        row("a name for a float", "f32", "alarm=1",
            "t:2: column 15 \"alarm\": values of type f32 have no names");
        row("both", "u16", "alarm=1 hi=3",
            "t:2: column 15 \"alarm\": a value has either limits or a name that is an alarm");
        row("limits of a bool", "bool", "hi=0.5",
            "t:2: column 18 \"hi\": values of type bool have none; column \"alarm\" names a value "
            "that is an alarm");
        row("no number", "u16", "lo=x", "t:2: column 17 \"lo\": \"x\" is not a number");
        row("lo below lolo", "u16", "lolo=5 lo=4",
            "t:2: column 17 \"lo\": 4 is below lolo, which is 5");
        row("hi equal to lo", "u16", "lo=5 hi=5",
            "t:2: column 18 \"hi\": 5 is no more than lo, which is 5");
        row("hihi equal to lolo", "u16", "lolo=5 hihi=5",
            "t:2: column 19 \"hihi\": 5 is no more than lolo, which is 5");
        row("hihi below hi", "u16", "hi=5 hihi=4",
            "t:2: column 19 \"hihi\": 4 is below hi, which is 5");
        row("hysteresis below 0", "u16", "hi=5 hysteresis=-1",
            "t:2: column 20 \"hysteresis\": -1 is below 0");
        row("hysteresis as wide as the gap", "u16", "lo=5 hi=7 hysteresis=2",
            "t:2: column 20 \"hysteresis\": 2 is no less than the gap between the limits: a value "
            "would stay in alarm once it is");
        row("delay", "u16", "hi=5 on_delay=3",
            "t:2: column 21 \"on_delay\": \"3\" is no delay: 0, or a number with ms, s, min or h, "
            "of a day at most");
        row("negative delay", "u16", "hi=5 off_delay=-3s",
            "t:2: column 22 \"off_delay\": \"-3s\" is no delay: 0, or a number with ms, s, min or "
            "h, of a day at most");
        row("priority", "u16", "hi=5 priority=urgent",
            "t:2: column 23 \"priority\": \"urgent\" is no priority (low, medium, high or "
            "critical)");
        row("all at once", "u16", "interval=x lo=x priority=x",
            "t:2: column 13 \"interval\": \"x\" is no interval: a number with ms, s, min or h, "
            "from 10 ms to a day\n"
            "t:2: column 17 \"lo\": \"x\" is not a number\n"
            "t:2: column 23 \"priority\": \"x\" is no priority (low, medium, high or critical)");
        row("beside a wrong scale", "u16", "scale=0 lo=x alarm_text=a",
            "t:2: column 6 \"scale\": 0 makes all values one\n"
            "t:2: column 17 \"lo\": \"x\" is not a number");
    }

    void wrongFieldsAreNamed()
    {
        QFETCH(QString, type);
        QFETCH(QString, fields);
        QFETCH(QString, error);
        const TagListResult list = parseTagList(listOf(type, fields));
        QCOMPARE(shown(list.errors), error);
        QVERIFY(list.tags.isEmpty());
    }

    void equalOuterLimitsAreAllowed()
    {
        const TagListResult list =
            parseTagList(listOf(QStringLiteral("u16"), QStringLiteral("lolo=5 lo=5 hi=7 hihi=7")));
        QCOMPARE(shown(list.errors + list.warnings), QString());
    }

    void whatSaysNothingIsDoubtful()
    {
        const TagListResult list = parseTagList(listOf(
            QStringLiteral("u16"),
            QStringLiteral("hysteresis=1 on_delay=1s off_delay=1s priority=low alarm_text=x")));
        QCOMPARE(shown(list.errors), QString());
        QCOMPARE(list.warnings.size(), 5);
        QCOMPARE(list.warnings.at(0).text,
                 QString("says nothing: the tag has neither a limit nor an alarm"));
        QVERIFY(!watchOf(list.tags.at(0)).alarm.has_value());
    }

    void whatNoValueReachesIsDoubtful_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("fields");
        QTest::addColumn<QString>("warning");
        const auto row = [](const char *name, const char *type, const char *fields,
                            const char *warning) {
            QTest::newRow(name) << QString(QLatin1String(type)) << QString(QLatin1String(fields))
                                << QString(QLatin1String(warning));
        };
        row("hihi", "u16", "scale=0.01 hi=655.34 hihi=700",
            "t:2: column 19 \"hihi\": no value is above 700; they go from 0.00 to 655.35");
        row("hi at the end", "u16", "hi=65535",
            "t:2: column 18 \"hi\": no value is above 65535; they go from 0 to 65535");
        row("hi below the start", "u16", "hi=-1",
            "t:2: column 18 \"hi\": all values are above -1; they go from 0 to 65535");
        row("hi at the start", "u16", "hi=0", "");
        row("lo", "s16", "scale=0.1 lo=-3276.8",
            "t:2: column 17 \"lo\": no value is below -3276.8; they go from -3276.8 to 3276.7");
        row("lo in reach", "s16", "scale=0.1 lolo=-3276.7 lo=3276.7", "");
        row("lolo above the end", "bcd16", "lolo=10000",
            "t:2: column 16 \"lolo\": all values are below 10000; they go from 0 to 9999");
        row("falling", "u16", "scale=-1 lolo=-65535 hi=0",
            "t:2: column 16 \"lolo\": no value is below -65535; they go from -65535 to 0\n"
            "t:2: column 18 \"hi\": no value is above 0; they go from -65535 to 0");
        row("wide", "u64", "hi=18446744073709551614", "");
        row("too wide", "u64", "hi=18446744073709551615",
            "t:2: column 18 \"hi\": no value is above 18446744073709551615; they go from 0 to "
            "18446744073709551615");
        row("float", "f32", "hi=1e35 deadband=1e35", "");
        row("deadband", "u16", "deadband=65535",
            "t:2: column 14 \"deadband\": no value is ever farther from another than 65535; they "
            "go from 0 to 65535");
        row("deadband in reach", "u16", "deadband=65534", "");
        row("deadband in percent", "u16", "raw_low=0 raw_high=65535 low=0 high=10 deadband=100%",
            "t:2: column 14 \"deadband\": no value is ever farther from another than 100%; they "
            "go from 0.0000 to 10.0000");
        row("deadband of a part", "u16", "raw_low=0 raw_high=27648 low=0 high=10 deadband=100%",
            "");
    }

    void whatNoValueReachesIsDoubtful()
    {
        QFETCH(QString, type);
        QFETCH(QString, fields);
        QFETCH(QString, warning);
        const TagListResult list = parseTagList(listOf(type, fields));
        QCOMPARE(shown(list.errors), QString());
        QCOMPARE(shown(list.warnings), warning);
        QCOMPARE(list.tags.size(), 1);
    }

    void decimalCommasAreUnderstood()
    {
        const TagListResult list =
            parseTagList("name;area;address;station;type;interval;deadband;lo;hi;hysteresis;on_"
                         "delay;alarm_text\n"
                         "a;D;5.2.1;1;s16;0,5s;0,25;-1,5;2,5;0,5;1,5s;hot, very hot\n");
        QCOMPARE(shown(list.errors + list.warnings), QString());
        const TagWatch watch = watchOf(list.tags.at(0));
        QCOMPARE(watch.interval_ns, qint64(500000000));
        QCOMPARE(watch.deadband.value_or(-1), 0.25);
        QCOMPARE(watch.alarm->lo.value_or(0), -1.5);
        QCOMPARE(watch.alarm->hysteresis, 0.5);
        QCOMPARE(watch.alarm->onDelay_ns, qint64(1500000000));
        QCOMPARE(watch.alarm->text, QString("hot, very hot"));
    }
};

QTEST_APPLESS_MAIN(TestTagWatch)
#include "tst_tag_watch.moc"
