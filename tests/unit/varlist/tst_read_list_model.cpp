// The rebuild of the read list against a plain model of it, on thousands of small random lists.
#include "varlist/read_list.h"

#include "tests/support/draw.h"
#include "tests/support/driver_test.h"
#include "tests/support/plain_models.h"
#include "tests/support/record_text.h"

#include <QtTest>

#include <vector>

namespace
{

/// One variable as the model sees it: the parts are numbers, the text is made from them.
struct Variable {
    int area;
    int station;
    int parts[4];
    QString text;
    QString name;
};

struct Group {
    int key;
    std::vector<RW_VAR> newestFirst;
};

/// A part and its text: mostly a small number, now and then one that counts as 0 or is negative.
int randomPart(Draw &draw, QString &text)
{
    const int kind = draw.below(20);
    if (kind == 0) {
        text = "x";
        return 0;
    }
    if (kind == 1) {
        text.clear();
        return 0;
    }
    const int value = kind == 2 ? -1 : draw.below(3);
    text = QString::number(value);
    return value;
}

/// Draws from so few areas, stations and addresses that groups and addresses often coincide.
Variable randomVariable(Draw &draw)
{
    static const int areas[] = {AREA_X, AREA_D, AREA_C, AREA_D, 3};
    static const int stations[] = {0, 1, 255};
    Variable variable = {};
    variable.area = draw.of(areas);
    variable.station = draw.of(stations);
    const int present = 3 + draw.below(2);
    QStringList texts;
    for (int i = 0; i < present; ++i) {
        QString text;
        variable.parts[i] = randomPart(draw, text);
        texts.append(text);
    }
    variable.text = texts.join(".");
    variable.name = QString::number(draw.below(1000000));
    return variable;
}

int addressOf(const Variable &variable)
{
    const int *part = variable.parts;
    if (variable.area == AREA_C)
        return part[1] * 160 + part[2] * 80 + part[3];
    return variable.area < AREA_C ? part[0] * 32 + part[1] * 2 + part[2] : 0;
}

RW_VAR entryFor(const Variable &variable, const ComInfo &info)
{
    RW_VAR entry;
    entry.ownerSubId = -1;
    entry.reserved3 = info.remoteMode;
    entry.plcNo = info.localPlcNo;
    entry.name = variable.name;
    entry.addressText = variable.text;
    entry.areaType = variable.area;
    entry.address = addressOf(variable);
    entry.station = variable.station;
    entry.count = 1;
    if (variable.area == AREA_C) {
        entry.address = variable.parts[1] * 160 + variable.parts[2] * 80;
        entry.count = 70;
    }
    return entry;
}

std::vector<Group> groupsOf(const std::vector<Variable> &variables, const ComInfo &info)
{
    std::vector<Group> groups;
    for (const Variable &variable : variables) {
        if (addressOf(variable) < 0)
            continue;
        const int key = variable.area * 255 + variable.station;
        auto group = groups.begin();
        while (group != groups.end() && group->key != key)
            ++group;
        if (group == groups.end())
            group = groups.insert(groups.end(), Group{key, {}});
        group->newestFirst.insert(group->newestFirst.begin(), entryFor(variable, info));
    }
    return groups;
}

QStringList modelOfRebuild(const std::vector<Variable> &variables, const ComInfo &info)
{
    QStringList result;
    for (const Group &group : groupsOf(variables, info)) {
        QList<RW_VAR> entries;
        for (const RW_VAR &entry : group.newestFirst)
            entries.append(entry);
        plainSort(entries);
        int last = -1;
        for (const RW_VAR &entry : entries) {
            if (entry.address == last)
                continue;
            last = entry.address;
            result.append(recordText(entry));
        }
    }
    return result;
}

QList<HOST_VAR> hostList(const std::vector<Variable> &variables)
{
    QList<HOST_VAR> list;
    for (const Variable &variable : variables) {
        HOST_VAR var;
        var.areaType = quint8(variable.area);
        var.station = quint8(variable.station);
        var.addressText = variable.text;
        var.name = variable.name;
        list.append(var);
    }
    return list;
}

} // namespace

class TestReadListModel : public DriverTest
{
    Q_OBJECT

private Q_SLOTS:
    void theRebuildAgreesWithItsModel()
    {
        Draw draw(77031);
        int repeatsDropped = 0;
        for (int round = 0; round < 6000; ++round) {
            std::vector<Variable> variables(size_t(draw.below(13)));
            for (Variable &variable : variables)
                variable = randomVariable(draw);
            info_.remoteMode = draw.below(2);
            info_.localPlcNo = draw.below(4);

            const QStringList expected = modelOfRebuild(variables, info_);
            QList<HOST_VAR> vars = hostList(variables);
            QCOMPARE(ReCreatReadVarList(&vars), expected.size());
            QCOMPARE(recordTexts(PLC_driver.readList), expected);
            if (expected.size() < vars.size())
                ++repeatsDropped;
        }
        QVERIFY(repeatsDropped > 1000); // else the lists drawn prove little
    }

    void aLargeGroupAgreesWithTheModel()
    {
        Draw draw(5);
        std::vector<Variable> variables(400);
        for (Variable &variable : variables) {
            variable = randomVariable(draw);
            variable.area = AREA_D;
            variable.station = 1;
        }
        QList<HOST_VAR> vars = hostList(variables);
        const QStringList expected = modelOfRebuild(variables, info_);
        QCOMPARE(ReCreatReadVarList(&vars), expected.size());
        QCOMPARE(recordTexts(PLC_driver.readList), expected);
    }

    void sortingAgreesWithTheExchangeSort()
    {
        Draw draw(4711);
        for (int round = 0; round < 3000; ++round) {
            QList<RW_VAR> list;
            for (int i = draw.below(20); i > 0; --i) {
                RW_VAR var;
                var.address = draw.below(9) - 4;
                var.ownerId = i; // tells equal addresses apart
                list.append(var);
            }
            QList<RW_VAR> expected = list;
            plainSort(expected);
            Bubble_Sort(&list);
            QCOMPARE(recordTexts(list), recordTexts(expected));
        }
    }
};

QTEST_APPLESS_MAIN(TestReadListModel)
#include "tst_read_list_model.moc"
