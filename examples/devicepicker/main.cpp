// SPDX-License-Identifier: BSD-3-Clause
// devicepicker: the smallest real host of the device selector dialog. It asks
// the user for one chip and prints it for a script to read, or renders the
// dialog to a PNG on a machine without a display (the README's screenshot is
// made that way).
//
// Exit status: 0 a chip was chosen and printed; 1 nothing was chosen (the
// dialog was cancelled or closed, or OK was pressed with no row selected);
// 2 bad usage, an unreadable data file, a screenshot that could not be
// written, or no display to show the dialog on. Scripts branch on these, so
// every failure path below ends in one of them.

#include "chipjson.h"
#include "commandline.h"

#include <boardcatalogue.h>
#include <chipinfo.h>
#include <devicedb.h>
#include <chiprequirements.h>
#include <deviceselector.h>
#include <deviceselectordialog.h>

#include <QApplication>
#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QDialogButtonBox>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QKeyEvent>
#include <QLibraryInfo>
#include <QLocale>
#include <QMenu>
#include <QMessageBox>
#include <QPixmap>
#include <QPushButton>
#include <QTabWidget>
#include <QSettings>
#include <QTableView>
#include <QTimer>
#include <QTranslator>

#include <cstdio>
#include <memory>

namespace {

enum class Answer { Nobody, Accept, Reject, Recent, Compared, Unknown };

struct Options
{
    QCommandLineOption help = ExampleCommandLine::helpOption();
    QCommandLineOption version{QStringLiteral("version"), QStringLiteral("Show the program's version and exit.")};
    QCommandLineOption data = ExampleCommandLine::dataOption();
    QCommandLineOption preset{QStringLiteral("preset"),
                              QStringLiteral("Open the dialog on the chip with device identifier ID; an old "
                                             "zr9k31-NNN identifier is understood."),
                              QStringLiteral("ID")};
    QCommandLineOption partNumber{QStringLiteral("part-number"),
                                  QStringLiteral("Open the dialog on exactly the chip with part number PN "
                                                 "(one device identifier covers several part numbers)."),
                                  QStringLiteral("PN")};
    QCommandLineOption json{QStringLiteral("json"), QStringLiteral("Print the chosen chip as a JSON object.")};
    QCommandLineOption lang{QStringLiteral("lang"),
                            QStringLiteral("Show the dialog in language CODE (for example de), from the "
                                           "translations installed beside the program. Without it the "
                                           "system's language (LANGUAGE, LC_ALL, LC_MESSAGES, LANG) is "
                                           "followed when there is a translation for it; here: %1."),
                            QStringLiteral("CODE")};
    QCommandLineOption screenshot{QStringLiteral("screenshot"),
                                  QStringLiteral("Do not ask: render the dialog, preset and scrolled to its "
                                                 "chip, to the PNG image FILE and exit."),
                                  QStringLiteral("FILE")};

    QCommandLineOption min{QStringLiteral("min"),
                           QStringLiteral("Show the row of resource minimums with at least VALUE of resource "
                                          "COLUMN filled in, e.g. LUT=20000 or BSRAM=500Kb; repeatable."),
                           QStringLiteral("COLUMN=VALUE")};
    QCommandLineOption comparePanel{QStringLiteral("compare-panel"),
                                    QStringLiteral("Show the comparison panel below the table (chips side by side, "
                                                   "the rows where they differ in bold; a double-click or Enter on a "
                                                   "column selects its chip), and in the table's context menu \"Show "
                                                   "chips in the same package\" and \"Add to comparison\".")};
    QCommandLineOption compare{QStringLiteral("compare"),
                               QStringLiteral("Put the chip with part number PN into the comparison panel, which "
                                              "is then shown; repeatable. An unknown PN is bad usage."),
                               QStringLiteral("PN")};
    QCommandLineOption recent{QStringLiteral("recent"),
                              QStringLiteral("Offer the last eight chips chosen, newest first, in a Recent "
                                             "drop-down; the dialog's state (those chips, its size, the table's "
                                             "columns) is kept between runs in %1.")};
    QCommandLineOption boards{QStringLiteral("boards"),
                              QStringLiteral("Offer the bundled boards (boards.csv beside the catalogue) in a "
                                             "Boards tab, shown first; choosing a board chooses its chip.")};

    /// The options that may be given once only.
    QList<QCommandLineOption> once() const
    {
        return {help, version, data, preset, partNumber, json, lang, screenshot, comparePanel, recent, boards};
    }
    /// All of them, in the order --help lists them.
    QList<QCommandLineOption> all() const
    {
        return {help, version, data, preset, partNumber, json, lang, screenshot, min, comparePanel, compare, recent, boards};
    }
};

/// What the dialog opens with, besides the catalogue.
struct Setup
{
    QString preset;
    DEV::ChipInfo exact;
    DEV::ChipRequirements requirements;
    bool comparisonPanel = false;
    QList<DEV::ChipInfo> compared;
    bool recent = false;
    std::shared_ptr<const DEV::BoardCatalogue> boards;
};

const char* const kEpilog = R"(
Opens the device selector dialog and prints the chip chosen with OK, one
member of the chip record per line, in this order:

  deviceId: zr9k31a-015
  partNumber: ZR9K31AA-LVBG484C6/I5
  series: ZR9K
  matchKey, device, deviceVersion, package, voltage, speed, auxiliary: ...
  resources: 215, 31104, 46656, , 1944Kb, 504Kb, , 27, 2

Each line is the member's name, a colon and, when the value is not empty, a
space and the value. "resources" lists the counts IO, LUT, FF, ROM16, SSRAM,
BSRAM, User Flash, DSP, PLL separated by ", ", empty ones included. --json
prints one object with the same names, "resources" as an array of strings,
each exactly as the data file has it.

Without a display (no DISPLAY or WAYLAND_DISPLAY, or none that answers, and
no QT_QPA_PLATFORM chosen) the program runs on Qt's offscreen platform, where
--screenshot works but the dialog cannot be shown. A preset that the
catalogue does not know is reported on standard error, and the dialog opens
unfiltered.

Exit status: 0 a chip was chosen; 1 nothing was chosen (cancelled, or OK with
no row selected), nothing printed; 2 bad usage, unreadable data file,
unwritable screenshot or no display.
)";

using namespace ExampleCommandLine;

// What the statuses mean here; the values are the examples' shared ones.
enum PickerStatus { Chosen = Found, NothingChosen = NothingFound };

/*
 * QApplication picks its platform plugin when it is constructed, and Debian's
 * default (xcb) aborts the process when there is no X server, or when DISPLAY
 * names one that does not answer. Qt tries the platforms of a ';'-separated
 * list in turn, so the display's own platform comes first and the offscreen
 * one last: --help, the usage errors and --screenshot then work on any
 * machine, and the dialog says it has no display instead of aborting. A
 * platform the user chose (QT_QPA_PLATFORM or -platform) is left alone.
 */
bool fallingBack = false;

void preferOffscreenWithoutDisplay(int argc, char** argv)
{
    if (!qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        return;
    for (int i = 1; i < argc; ++i) {
        if (qstrcmp(argv[i], "-platform") == 0 || qstrcmp(argv[i], "--platform") == 0)
            return;
    }
    QByteArray platforms;
    if (!qEnvironmentVariableIsEmpty("DISPLAY"))
        platforms += "xcb;";
    if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY"))
        platforms += "wayland;";
    fallingBack = !platforms.isEmpty();
    qputenv("QT_QPA_PLATFORM", platforms + "offscreen");
}

/*
 * On a headless machine Qt's platform layer reports things that are neither
 * the user's concern nor a fault (no XDG runtime directory, a platform that
 * ignores size hints). Scripts read standard error for the one-line message,
 * so that chatter is dropped; every other message passes unchanged.
 */
QtMessageHandler passOn = nullptr;

void dropPlatformChatter(QtMsgType type, const QMessageLogContext& context, const QString& message)
{
    if (type == QtWarningMsg
        && (message.startsWith(QLatin1String("QStandardPaths: XDG_RUNTIME_DIR not set"))
            || message == QLatin1String("This plugin does not support propagateSizeHints()")))
        return;
    // A display that does not answer: the platform list goes on to the next
    // platform, and the one-line message says what that means.
    if (fallingBack && qstrncmp(context.category ? context.category : "", "qt.qpa.", 7) == 0
        && (message.startsWith(QLatin1String("could not connect to display"))
            || message.startsWith(QLatin1String("Could not load the Qt platform plugin"))
            || message.startsWith(QLatin1String("Could not find the Qt platform plugin"))
            || message.startsWith(QLatin1String("Failed to create wl_display"))))
        return;
    if (passOn)
        passOn(type, context, message);
}

bool cannotShowWindows()
{
    const QString platform = QGuiApplication::platformName();
    return platform == QLatin1String("offscreen") || platform == QLatin1String("minimal");
}

/*
 * Test aid, on purpose left out of --help: DEVICEPICKER_AUTOANSWER=accept or
 * reject clicks OK or Cancel as soon as the modal dialog is up, so the tests
 * can run the interactive path, getSelectedChip() included, without a person.
 * "recent" first chooses the newest chip of the Recent drop-down, "compared"
 * first presses Enter on the last column of the comparison panel; both then
 * click OK. Unset or empty, nothing is scheduled.
 */
Answer autoAnswer()
{
    const QByteArray value = qgetenv("DEVICEPICKER_AUTOANSWER");
    const std::pair<const char*, Answer> answers[] = {
        {"", Answer::Nobody},          {"accept", Answer::Accept},     {"reject", Answer::Reject},
        {"recent", Answer::Recent},    {"compared", Answer::Compared},
    };
    for (const auto& [name, answer] : answers) {
        if (value == name)
            return answer;
    }
    return Answer::Unknown;
}

/// The steps of the "recent" and "compared" test aids before OK.
void chooseAsTheUserWould(QDialog* dialog, Answer answer)
{
    auto* recent = dialog->findChild<QPushButton*>(QStringLiteral("recentButton"));
    if (answer == Answer::Recent && recent && !recent->menu()->actions().isEmpty())
        recent->menu()->actions().first()->trigger();
    auto* compared = dialog->findChild<QTableView*>(QStringLiteral("comparisonView"));
    if (answer == Answer::Compared && compared && compared->model()->columnCount() > 0) {
        compared->setCurrentIndex(compared->model()->index(0, compared->model()->columnCount() - 1));
        QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
        QApplication::sendEvent(compared, &enter);
    }
}

void answerWhenShown(Answer answer, int delay = 0)
{
    // exec() shows the dialog before it runs its loop, so this finds it on
    // the first or second try; the retries only guard against a slow show.
    QTimer::singleShot(delay, [answer] {
        auto* dialog = qobject_cast<DEV::DeviceSelectorDialog*>(QApplication::activeModalWidget());
        auto* buttons = dialog ? dialog->findChild<QDialogButtonBox*>() : nullptr;
        if (!buttons) {
            answerWhenShown(answer, 10);
            return;
        }
        chooseAsTheUserWould(dialog, answer);
        QPushButton* button =
            buttons->button(answer == Answer::Reject ? QDialogButtonBox::Cancel : QDialogButtonBox::Ok);
        if (button->isEnabled()) {
            button->click();
            return;
        }
        // A person would be stuck here too; a test must not be.
        std::fprintf(stderr, "devicepicker: DEVICEPICKER_AUTOANSWER: the button is disabled, cancelling\n");
        dialog->reject();
    });
}

QByteArray chipText(const DEV::ChipInfo& chip)
{
    const std::pair<const char*, QString> members[] = {
        {"deviceId", chip.deviceId},
        {"partNumber", chip.partNumber},
        {"series", chip.series},
        {"matchKey", chip.matchKey},
        {"device", chip.device},
        {"deviceVersion", chip.deviceVersion},
        {"package", chip.package},
        {"voltage", chip.voltage},
        {"speed", chip.speed},
        {"auxiliary", chip.auxiliary},
        {"resources", chip.resources.join(QLatin1String(", "))},
    };
    QString text;
    for (const auto& [name, value] : members) {
        // No trailing blank after an empty value: "key:" reads as empty.
        text += QLatin1String(name) + QLatin1Char(':');
        if (!value.isEmpty())
            text += QLatin1Char(' ') + value;
        text += QLatin1Char('\n');
    }
    // Local 8-bit, the encoding the loader read the data file in, so the
    // bytes printed are the bytes of the file.
    return text.toLocal8Bit();
}

QByteArray chipJson(const DEV::ChipInfo& chip)
{
    return QJsonDocument(ExampleCommandLine::chipToJson(chip)).toJson(QJsonDocument::Indented);
}

/// The dialog on the preset chip, with the row of resource minimums when any is given.
void prepare(DEV::DeviceSelectorDialog& dialog, const Setup& setup)
{
    dialog.setRequirements(setup.requirements);
    dialog.deviceSelector()->setComparisonVisible(setup.comparisonPanel);
    dialog.deviceSelector()->setComparedChips(setup.compared);
    if (setup.exact.partNumber.isEmpty())
        dialog.setCurrentDevice(setup.preset);
    else
        dialog.setCurrentDevice(setup.exact);
    if (setup.boards) {
        dialog.deviceSelector()->setBoards(setup.boards.get());
        dialog.findChild<QTabWidget*>()->setCurrentIndex(1);
    }
}

/// Room for the comparison panel below the table, or the dialog's own size.
QSize openingSize(const DEV::DeviceSelectorDialog& dialog, const Setup& setup)
{
    return setup.comparisonPanel ? QSize(900, 760) : dialog.sizeHint();
}

int screenshot(DEV::DeviceDb* db, const Setup& setup, const QString& path)
{
    DEV::DeviceSelectorDialog dialog(db);
    prepare(dialog, setup);
    dialog.resize(openingSize(dialog, setup));
    dialog.show();
    // The selector scrolls to the preset chip from a zero-delay timer, and the
    // table lays out its rows lazily; a few rounds of the event loop let both
    // happen before the picture is taken.
    for (int round = 0; round < 3; ++round) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
    const QPixmap picture = dialog.grab();
    if (picture.isNull() || !picture.save(path, "PNG"))
        return usageError(QStringLiteral("cannot write screenshot: %1").arg(path));
    return Chosen;
}

/*
 * The language of the library's translation that fits @p languages best
 * ("de" for "de-AT"), or an empty string for none. The files live in
 * share/device/translations beside bin/, in the build tree as after
 * installation.
 */
QString translatedLanguage(const QStringList& languages)
{
    const QString dir = QCoreApplication::applicationDirPath() + QLatin1String("/../share/device/translations/");
    for (QString language : languages) {
        language.replace(QLatin1Char('-'), QLatin1Char('_'));
        for (; !language.isEmpty(); language = language.section(QLatin1Char('_'), 0, -2)) {
            if (QFile::exists(dir + QLatin1String("device_") + language + QLatin1String(".qm")))
                return language;
            if (!language.contains(QLatin1Char('_')))
                break;
        }
    }
    return QString();
}

/// Installs the library's translation into @p language, and Qt's own for the
/// dialog's standard buttons when the system has it (Debian's
/// qttranslations5-l10n).
void installTranslations(QApplication& app, const QString& language)
{
    const std::pair<QString, QString> files[] = {
        {QLatin1String("device_") + language,
         QCoreApplication::applicationDirPath() + QLatin1String("/../share/device/translations")},
#if QT_VERSION >= QT_VERSION_CHECK(6, 0, 0)
        {QLatin1String("qtbase_") + language, QLibraryInfo::path(QLibraryInfo::TranslationsPath)},
#else
        {QLatin1String("qtbase_") + language, QLibraryInfo::location(QLibraryInfo::TranslationsPath)},
#endif
    };
    for (const auto& [name, dir] : files) {
        auto* translator = new QTranslator(&app);
        if (translator->load(name, dir))
            app.installTranslator(translator);
        else
            delete translator;
    }
}

/// What is wrong with the options taken together, or an empty string.
QString conflict(const QCommandLineParser& parser, const Options& o)
{
    const QString common = misuse(parser, o.once());
    if (!common.isEmpty())
        return common;
    if (parser.isSet(o.data) && parser.value(o.data).isEmpty())
        return QStringLiteral("--data needs a file name");
    if (parser.isSet(o.screenshot) && parser.value(o.screenshot).isEmpty())
        return QStringLiteral("--screenshot needs a file name");
    if (parser.isSet(o.screenshot) && parser.isSet(o.json))
        return QStringLiteral("--json and --screenshot cannot be combined");
    if (parser.isSet(o.preset) && parser.isSet(o.partNumber))
        return QStringLiteral("--preset and --part-number cannot be combined");
    if (parser.isSet(o.screenshot) && parser.isSet(o.recent))
        return QStringLiteral("--recent and --screenshot cannot be combined");
    return QString();
}

/*
 * The exact chip --part-number asks for, or an empty record (then --preset,
 * if any, is the device identifier to open on). A preset the catalogue does
 * not know is reported; the dialog then opens unfiltered, as the library
 * leaves it.
 */
DEV::ChipInfo exactPreset(DEV::DeviceDb* db, const QString& id, const QString& partNumber)
{
    if (!partNumber.isEmpty()) {
        const DEV::ChipInfo chip = db->findByPN(partNumber).value(0);
        if (chip.partNumber.isEmpty())
            usageError(QStringLiteral("unknown part number '%1'; the dialog opens unfiltered").arg(partNumber));
        return chip;
    }
    if (!id.isEmpty() && db->findByID(id).deviceId.isEmpty())
        usageError(QStringLiteral("unknown device identifier '%1'; the dialog opens unfiltered").arg(id));
    return DEV::ChipInfo();
}

/// The one line on standard error, and, for a person at a display, a message box saying the same.
int failure(const QString& message, bool person)
{
    if (person)
        QMessageBox::critical(nullptr, QStringLiteral("devicepicker"), message);
    return usageError(message);
}

/*
 * The dialog of the host example with what the options add: the row of
 * resource minimums filled in, the comparison panel, the recent chips and
 * the dialog's state kept in the settings (only then).
 */
int pickInDialog(const QCommandLineParser& parser, const Options& o, DEV::DeviceDb* db, const Setup& setup)
{
    DEV::DeviceSelectorDialog dialog(db);
    dialog.resize(openingSize(dialog, setup));
    QSettings settings;
    if (setup.recent) {
        dialog.restoreState(settings.value(QStringLiteral("dialog/state")).toByteArray());
        dialog.setRecentVisible(true);
    }
    // A size kept from a run without the comparison panel may leave it no room.
    if (setup.comparisonPanel)
        dialog.resize(dialog.size().expandedTo(openingSize(dialog, setup)));
    prepare(dialog, setup);
    const DEV::ChipInfo chip = dialog.exec() == QDialog::Accepted ? dialog.selectedDevice() : DEV::ChipInfo();
    if (setup.recent)
        settings.setValue(QStringLiteral("dialog/state"), dialog.saveState());
    if (chip.deviceId.isEmpty())
        return NothingChosen;
    printOut(parser.isSet(o.json) ? chipJson(chip) : chipText(chip));
    return Chosen;
}

/// Everything after the command line was read: the catalogue, the preset, the dialog or its picture.
int pick(const QCommandLineParser& parser, const Options& o, Answer answer)
{
    // A person is only there when the dialog can be shown and no test answers it.
    const bool person = answer == Answer::Nobody && !parser.isSet(o.screenshot) && !cannotShowWindows();
    QString error;
    std::unique_ptr<DEV::DeviceDb> own;
    DEV::DeviceDb* db = openDatabase(parser.value(o.data), &own, &error, true);
    if (!db)
        return failure(error, person);
    Setup setup;
    setup.preset = parser.value(o.preset);
    setup.exact = exactPreset(db, setup.preset, parser.value(o.partNumber));
    for (const QString& assignment : parser.values(o.min)) {
        const QString problem = setup.requirements.set(assignment);
        if (!problem.isEmpty())
            return usageError(problem);
    }
    for (const QString& partNumber : parser.values(o.compare)) {
        setup.compared << db->findByPN(partNumber).value(0);
        if (setup.compared.constLast().partNumber.isEmpty())
            return usageError(QStringLiteral("--compare: unknown part number '%1'").arg(partNumber));
    }
    setup.comparisonPanel = parser.isSet(o.comparePanel) || !setup.compared.isEmpty();
    setup.recent = parser.isSet(o.recent);
    if (parser.isSet(o.boards)) {
        const QString boards = installedBoards();
        if (!QFileInfo(boards).isFile() || !QFileInfo(boards).isReadable())
            return failure(QStringLiteral("cannot read board file: %1").arg(QDir::cleanPath(boards)), person);
        setup.boards = std::make_shared<const DEV::BoardCatalogue>(boards, *db);
    }

    if (parser.isSet(o.screenshot))
        return screenshot(db, setup, parser.value(o.screenshot));

    // A dialog nobody can see would wait for ever.
    if (answer == Answer::Nobody && cannotShowWindows())
        return usageError(QStringLiteral("no display to show the dialog on (try --screenshot FILE)"));
    if (answer != Answer::Nobody)
        answerWhenShown(answer);

    if (!setup.requirements.isEmpty() || setup.comparisonPanel || setup.recent || setup.boards)
        return pickInDialog(parser, o, db, setup);
    const QString& preset = setup.preset;
    const DEV::ChipInfo& exact = setup.exact;

    // [host-example] The README shows this block verbatim.
    // Modal: returns once the user has answered. The preset is the project's
    // exact chip when it has one, else its device identifier; an empty
    // record means the user cancelled, or pressed OK with no row selected.
    const DEV::ChipInfo chip = exact.partNumber.isEmpty()
        ? DEV::DeviceSelectorDialog::getSelectedChip(nullptr, db, preset)
        : DEV::DeviceSelectorDialog::getSelectedChip(nullptr, db, exact);
    if (chip.deviceId.isEmpty())
        return NothingChosen;
    // [host-example]

    printOut(parser.isSet(o.json) ? chipJson(chip) : chipText(chip));
    return Chosen;
}

} // namespace

int main(int argc, char* argv[])
{
    passOn = qInstallMessageHandler(dropPlatformChatter);
    preferOffscreenWithoutDisplay(argc, argv);
    QApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("devicepicker"));
    QCoreApplication::setApplicationVersion(QStringLiteral(DEVICEPICKER_VERSION));
    // --recent keeps the dialog's state in <config dir>/Device/devicepicker.conf.
    QCoreApplication::setOrganizationName(QStringLiteral("Device"));

    Options o;
    const QString systemLanguage = translatedLanguage(QLocale::system().uiLanguages());
    o.lang.setDescription(o.lang.description().arg(systemLanguage.isEmpty() ? QStringLiteral("English") : systemLanguage));
    o.recent.setDescription(o.recent.description().arg(QSettings().fileName()));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Asks for one chip of the device catalogue and prints it."));
    parser.addOptions(o.all());
    if (!parser.parse(QCoreApplication::arguments()))
        return usageError(asFragment(parser.errorText()));
    if (parser.isSet(o.help)) {
        printOut((parser.helpText() + QLatin1String(kEpilog) + catalogueHelp()).toLocal8Bit());
        return Chosen;
    }
    if (parser.isSet(o.version)) {
        printOut(QStringLiteral("devicepicker %1\n").arg(QCoreApplication::applicationVersion()).toLocal8Bit());
        return Chosen;
    }
    const QString wrong = conflict(parser, o);
    if (!wrong.isEmpty())
        return usageError(wrong);
    const QString language = parser.isSet(o.lang) ? translatedLanguage({parser.value(o.lang)}) : systemLanguage;
    if (parser.isSet(o.lang) && language.isEmpty())
        return usageError(QStringLiteral("no translation for language '%1'").arg(parser.value(o.lang)));
    if (!language.isEmpty())
        installTranslations(app, language);
    const Answer answer = autoAnswer();
    if (answer == Answer::Unknown)
        return usageError(QStringLiteral("DEVICEPICKER_AUTOANSWER must be accept or reject"));
    return pick(parser, o, answer);
}
