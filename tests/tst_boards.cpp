// SPDX-License-Identifier: BSD-3-Clause
// The board catalogue, its table model and the selector's Boards tab, on tests/data/boards_fixture.csv over the
// chips of query_fixture.csv (lines 6 to 12 of the board file are each wrong in their own way).

#include "boardcatalogue.h"
#include "boardtablemodel.h"
#include "deviceselector.h"
#include "deviceselectordialog.h"
#include "searchlineedit.h"
#include "testhelpers.h"

#include <QtWidgets>

using L = QStringList;

static L ids(const QList<DEV::Board>& boards)
{
    L ids;
    for (const DEV::Board& board : boards)
        ids << board.id;
    return ids;
}

class TestBoards : public QObject
{
    Q_OBJECT
    const QString m_boards = TestHelpers::testPath("source") + "/tests/data/boards_fixture.csv";
    DEV::DeviceDb m_db{TestHelpers::testPath("source") + "/tests/data/query_fixture.csv"};

    std::unique_ptr<DEV::BoardCatalogue> quietly()
    {
        const TestHelpers::MessageCapture quiet;
        return std::make_unique<DEV::BoardCatalogue>(m_boards, m_db);
    }

private Q_SLOTS:
    // Bad lines are skipped, an unknown chip kept; each is warned of, in line order, as problems() keeps it.
    void loading()
    {
        const L problems{m_boards + ":6: chip 'NOPE-1' of board 'b-3' is not in the device catalogue",
                         m_boards + ":8: line skipped: board identifier 'b-1' is already on line 4",
                         m_boards + ":9: line skipped: 2 fields instead of 6", m_boards + ":10: line skipped: a quote out of place",
                         m_boards + ":11: line skipped: a quote out of place", m_boards + ":12: line skipped: no board identifier"};
        for (const QString& problem : problems)
            QTest::ignoreMessage(QtWarningMsg, qPrintable(problem));
        const DEV::BoardCatalogue catalogue(m_boards, m_db);
        QCOMPARE(catalogue.problems(), problems);
        QCOMPARE(ids(catalogue.boards()), (L{"b-2", "b-1", "b-3", "b-4"}));
        const DEV::Board beta = catalogue.find("b-2");
        QCOMPARE((L{beta.name, beta.maker, beta.description, beta.chip.deviceId}),
                 (L{"Beta, \"quoted\"", "Maker Two", "big, fast", "zr9k31-013"}));
        QCOMPARE(catalogue.find("b-4").name, "Delta");
        QVERIFY(catalogue.find("b-3").chip.partNumber.isEmpty() && catalogue.find("b-3").partNumber == "NOPE-1");
        QVERIFY(catalogue.find("B-1").id.isEmpty());
        QTest::ignoreMessage(QtWarningMsg, "/nowhere.csv: cannot be read");
        QVERIFY(DEV::BoardCatalogue("/nowhere.csv", m_db).boards().isEmpty());
    }

    // The bundled boards all have their chip in the bundled catalogue.
    void bundledBoardsResolve()
    {
        const DEV::BoardCatalogue catalogue(DEV::BoardCatalogue::defaultDataFile(), *DEV::DeviceDb::instance());
        QVERIFY(catalogue.problems().isEmpty());
        QVERIFY(catalogue.boards().size() >= 15 && catalogue.boards().size() <= 25);
    }

    void searchAndSort_data()
    {
        QTest::addColumn<QString>("search");
        QTest::addColumn<int>("column");
        QTest::addColumn<int>("order");
        QTest::addColumn<L>("expected");
        QTest::newRow("all, in file order (no column)") << "" << -1 << 0 << L{"b-2", "b-1", "b-3", "b-4"};
        QTest::newRow("maker, any case; column 10 leaves it") << "MAKER ONE" << 10 << 0 << L{"b-1", "b-3"};
        QTest::newRow("part number") << "zr9k31" << -1 << 0 << L{"b-2"};
        QTest::newRow("name; the description is not searched") << "quoted" << -1 << 0 << L{"b-2"};
        QTest::newRow("description only") << "small" << -1 << 0 << L();
        QTest::newRow("name: capitals first") << "" << 1 << 0 << L{"b-2", "b-4", "b-3", "b-1"};
        QTest::newRow("maker descending, ties kept") << "" << 2 << 1 << L{"b-4", "b-2", "b-1", "b-3"};
        QTest::newRow("part number, the unknown one too") << "" << 4 << 0 << L{"b-3", "b-1", "b-4", "b-2"};
        QTest::newRow("LUT, unknown chip as 0") << "" << 5 << 0 << L{"b-3", "b-1", "b-4", "b-2"};
        QTest::newRow("BSRAM descending, by Kb") << "" << 7 << 1 << L{"b-2", "b-4", "b-1", "b-3"};
        QTest::newRow("IO") << "" << 9 << 0 << L{"b-3", "b-4", "b-1", "b-2"};
    }
    void searchAndSort()
    {
        QFETCH(QString, search);
        QFETCH(int, column);
        QFETCH(int, order);
        QFETCH(L, expected);
        DEV::BoardTableModel model;
        model.setBoards(quietly()->search(search));
        QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
        model.sort(column, Qt::SortOrder(order));
        QCOMPARE(resets.size(), 1);
        QCOMPARE(TestHelpers::columnTexts(model, 0), expected);
        if (search.isEmpty() && column == 9) { // b-3's chip is unknown: no counts, not choosable
            QCOMPARE(TestHelpers::columnTexts(model, 8), (L{"", "10", "4", "27"}));
            QCOMPARE(model.flags(model.index(0, 0)), Qt::NoItemFlags);
            QCOMPARE(model.index(0, 0).data(Qt::ToolTipRole).toString(), "The device catalogue has no chip NOPE-1");
        }
    }

    // Without boards the selector has no tabs; a board chosen in its tab (found by a search that hides every chip)
    // is the chip that OK answers with, and the board the dialog tells; choosing another chip ends the board's choice.
    void boardChosenInTheDialog()
    {
        const auto catalogue = quietly();
        DEV::DeviceSelectorDialog dialog(&m_db);
        QVERIFY(!dialog.findChild<QTabWidget*>());
        dialog.deviceSelector()->setBoards(catalogue.get());
        auto* tabs = dialog.findChild<QTabWidget*>();
        QCOMPARE((L{tabs->tabText(0), tabs->tabText(1)}), (L{"&Chips", "&Boards"}));
        auto* view = qobject_cast<QTableView*>(tabs->widget(1));
        QTest::keyClicks(dialog.findChild<DEV::SearchLineEdit*>(), "alpha");
        QCOMPARE(TestHelpers::columnTexts(*view->model(), 0), L{"b-1"});
        QSignalSpy chosen(&dialog, &DEV::DeviceSelectorDialog::selectedDeviceChanged);
        QTimer::singleShot(0, &dialog, [&] {
            view->selectRow(0);
            dialog.findChild<QDialogButtonBox*>()->button(QDialogButtonBox::Ok)->click();
        });
        QCOMPARE(dialog.exec(), int(QDialog::Accepted));
        QCOMPARE(dialog.selectedDevice().partNumber, "QA2-LVBG256C6");
        QCOMPARE(chosen.last().at(0).value<DEV::DeviceArg>().partNumber, "QA2-LVBG256C6");
        QCOMPARE(dialog.deviceSelector()->selectedBoard().id, "b-1");
        QCOMPARE(dialog.findChild<DEV::SearchLineEdit*>()->text(), ""); // every board listed again, b-1 still selected
        QCOMPARE(view->selectionModel()->selectedRows().value(0).data().toString(), "b-1");
        dialog.setCurrentDevice(QStringLiteral("qb1-001"));
        QVERIFY(dialog.deviceSelector()->selectedBoard().id.isEmpty() && view->selectionModel()->selectedRows().isEmpty());
        dialog.deviceSelector()->setBoards(nullptr);
        auto* table = dialog.findChild<QTableView*>();
        QVERIFY(!dialog.findChild<QTabWidget*>() && table->parentWidget() == dialog.deviceSelector() && !table->isHidden());
    }
};

QTEST_MAIN(TestBoards)
#include "tst_boards.moc"
