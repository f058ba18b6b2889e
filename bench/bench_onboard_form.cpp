#include "goal_table.h"

#include <trovek-ui/eeprom_grama.h>
#include <trovek-ui/eeprom_widgets.h>
#include <trovek-ui/json_widgets.h>

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QFormLayout>
#include <QFrame>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

#include <algorithm>
#include <ctime>
#include <functional>
#include <map>
#include <memory>
#include <vector>

#include <malloc.h>

using namespace trovek;

namespace {

/** A section and its settings. */
constexpr int kEntriesOfASection = 10;
constexpr int kRuns = 7;

Json::Value entry(const char* type, const Json::Value& element)
{
    Json::Value entry;
    entry["offset"] = 0;
    entry["type"] = type;
    for (const char* code = type; *code != '\0'; ++code)
        entry["value"].append(element);
    return entry;
}

/** The kinds of settings that machines have, about as often as they have them. */
Json::Value setting(int number)
{
    Json::Value setting;
    switch (number % kEntriesOfASection) {
    case 1:
        setting = entry("iiiii", 14309);
        setting["unit"] = "steps";
        break;
    case 2:
        setting = entry("B", 1);
        setting["constraints"] = "l,0,1";
        break;
    case 3:
        setting = entry("B", 2);
        setting["constraints"] = "l,1,2,3";
        break;
    case 4:
        setting = entry("s", "Left");
        break;
    case 5:
        setting = entry("f", 0.123456789);
        break;
    case 6:
        setting = entry("B", 37);
        setting["axis_expand"] = "True";
        break;
    default:
        setting = entry("h", 220);
        setting["unit"] = "mm";
    }
    if (number % 2 == 1)
        setting["tooltip"] = "What this setting does, in about as many words as in a real map";
    return setting;
}

std::string name(const char* base, int number)
{
    std::string digits = std::to_string(number);
    digits.insert(0, 5 - digits.size(), '0');
    return base + digits;
}

/** Every name has an "s" in it, and only the last setting's a "z". */
Json::Value document(int entries)
{
    Json::Value document;
    for (int section = 0; section < entries; section += kEntriesOfASection) {
        Json::Value& settings = document["eeprom_map"][name("section_", section)]["sub_map"] =
            Json::objectValue;
        for (int number = section + 1; number < section + kEntriesOfASection; ++number)
            settings[name(number == entries - 1 ? "z_setting_" : "setting_", number)] =
                setting(number);
    }
    return document;
}

/** The editor that an entry needs, without any of the form's own work. */
QWidget* bareEditor(Json::Value& entry, Json::Value& element)
{
    const char code = entry["type"].asString()[0];
    const QString unit = QString::fromStdString(entry["unit"].asString());
    const std::string constraints = entry["constraints"].asString();
    if (code == 's')
        return makeEepromTextLine(&element);
    if (constraints == "l,0,1")
        return new JsonCheckBox(&element);
    if (!constraints.empty())
        return new EepromComboBox({QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3")},
                                  &element);
    if (entry.isMember("axis_expand"))
        return new EepromAxisBitfield(&element);
    if (code == 'f')
        return new JsonSpinBox(&element, {-3.4e38, 3.4e38}, 1, 5, unit);
    return new JsonSpinBox(&element, {-2147483648.0, 2147483648.0}, 1, 0, unit);
}

QWidget* bareField(Json::Value& entry)
{
    auto* const field = new QWidget;
    if (!entry.isMember("value"))
        return field;
    auto* const column = new QVBoxLayout(field);
    column->setContentsMargins(0, 0, 0, 0);
    Json::Value& elements = entry["value"];
    if (elements.size() == 1) {
        column->addWidget(bareEditor(entry, elements[0]));
    } else {
        auto* const list = new QWidget;
        auto* const rows = new QFormLayout(list);
        rows->setContentsMargins(0, 0, 0, 0);
        for (Json::Value& element : elements)
            rows->addRow(QStringLiteral("X:"), bareEditor(entry, element));
        column->addWidget(list);
    }
    if (entry.isMember("tooltip")) {
        auto* const tooltip = new QLabel(QString::fromStdString(entry["tooltip"].asString()));
        tooltip->setWordWrap(true);
        column->addWidget(tooltip);
    }
    return field;
}

/** The same widgets as in the form of that many entries, appended to a plain layout. */
class BareForm : public VerticalScrollArea
{
public:
    explicit BareForm(Json::Value document)
        : m_document(std::move(document))
    {
        auto* const inner = new QWidget;
        auto* const rows = new QFormLayout(inner);
        rows->setSizeConstraint(QLayout::SetMinimumSize);
        rows->setVerticalSpacing(0);
        setWidget(inner);
        Json::Value& sections = m_document["eeprom_map"];
        for (const std::string& section : sections.getMemberNames()) {
            append(*rows, section, sections[section], 0);
            Json::Value& settings = sections[section]["sub_map"];
            for (const std::string& setting : settings.getMemberNames())
                append(*rows, setting, settings[setting], 1);
        }
    }

private:
    static void append(QFormLayout& rows, const std::string& name, Json::Value& entry, int level)
    {
        auto* const label = new QLabel(QString::fromStdString(name));
        auto* const separator = new QFrame;
        separator->setFrameStyle(QFrame::HLine | QFrame::Sunken);
        separator->setMinimumHeight(20);
        rows.addRow(new GramaLeftContainerWidget(label, level), bareField(entry));
        rows.addRow(separator);
    }

    Json::Value m_document;
};

/** On the processor, where a form spends all its time; other work on the machine does not count. */
double secondsOf(const std::function<void()>& work)
{
    const std::clock_t begin = std::clock();
    work();
    return double(std::clock() - begin) / CLOCKS_PER_SEC;
}

/** The median of some runs, as single ones are disturbed. */
double median(const std::function<double()>& run)
{
    std::vector<double> seconds;
    for (int i = 0; i < kRuns; ++i)
        seconds.push_back(run());
    std::sort(seconds.begin(), seconds.end());
    return seconds[kRuns / 2];
}

/** Notes that a widget has been painted. */
class PaintWatch : public QObject
{
public:
    explicit PaintWatch(QWidget* widget) { widget->installEventFilter(this); }

    void waitForPaint()
    {
        while (!m_isPainted)
            QCoreApplication::processEvents();
        m_isPainted = false;
    }

    bool eventFilter(QObject*, QEvent* event) override
    {
        m_isPainted = m_isPainted || event->type() == QEvent::Paint;
        return false;
    }

private:
    bool m_isPainted = false;
};

/** Counts the widgets inside another one that are shown or hidden. */
class VisibilityCounter : public QObject
{
public:
    explicit VisibilityCounter(const QWidget& around)
        : m_around(around)
    {
        qApp->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::ShowToParent || event->type() == QEvent::HideToParent)
            count += m_around.isAncestorOf(qobject_cast<QWidget*>(watched));
        return false;
    }

    int count = 0;

private:
    const QWidget& m_around;
};

/** A shown form of onboard settings with its filter line. */
class Window
{
public:
    explicit Window(int entries)
        : form(document(entries), &m_window)
        , m_paint(form.widget())
    {
        auto* const column = new QVBoxLayout(&m_window);
        column->addLayout(form.createFilterBar());
        column->addWidget(&form);
        m_window.resize(600, 700);
        m_window.show();
        m_paint.waitForPaint();
        QCoreApplication::processEvents();
    }

    /** Seconds from the key until what it changed is painted. */
    double secondsOfKey(int key, const QString& text = QString())
    {
        auto* const edit = m_window.findChild<QLineEdit*>(QStringLiteral("filterEdit"));
        return secondsOf([&] {
            QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, text);
            QCoreApplication::sendEvent(edit, &press);
            form.widget()->update();
            m_paint.waitForPaint();
            QCoreApplication::processEvents();
        });
    }

private:
    QWidget m_window;

public:
    EepromGrama form;

private:
    PaintWatch m_paint;
};

void report(benchmark::State& state, const std::function<double()>& run, const char* label)
{
    for (auto _ : state)
        state.SetIterationTime(median(run));
    state.SetLabel(label);
}

template <typename Form>
double secondsToBuild(const Json::Value& map)
{
    std::unique_ptr<Form> form;
    const double seconds = secondsOf([&] { form = std::make_unique<Form>(map); });
    // Each widget that goes would search what is still posted for all of them.
    QCoreApplication::processEvents();
    return seconds;
}

template <typename Form>
double secondsToFirstPaint(const Json::Value& map)
{
    Form form(map);
    form.resize(600, 700);
    PaintWatch paint(form.widget());
    return secondsOf([&] {
        form.show();
        paint.waitForPaint();
    });
}

void buildBare(benchmark::State& state)
{
    const Json::Value map = document(int(state.range(0)));
    report(
        state, [&] { return secondsToBuild<BareForm>(map); }, "baseline of build");
}

void build(benchmark::State& state)
{
    static double secondsOfThousand = 0;
    const int entries = int(state.range(0));
    const Json::Value map = document(entries);
    const double seconds = median([&] { return secondsToBuild<EepromGrama>(map); });
    for (auto _ : state)
        state.SetIterationTime(seconds);
    state.SetLabel(entries == 5000 ? "goal: 1.4 x; growth from 1,000: 9 x" : "goal: 1.4 x");
    if (entries == 1000)
        secondsOfThousand = seconds;
    else if (entries == 5000 && secondsOfThousand > 0)
        state.counters["growth"] = seconds / secondsOfThousand;
}

void showBare(benchmark::State& state)
{
    const Json::Value map = document(int(state.range(0)));
    report(
        state, [&] { return secondsToFirstPaint<BareForm>(map); }, "baseline of show");
}

void show(benchmark::State& state)
{
    const Json::Value map = document(int(state.range(0)));
    report(
        state, [&] { return secondsToFirstPaint<EepromGrama>(map); }, "goal: 1.3 x");
}

/** From all rows to one. */
void filterNarrows(benchmark::State& state)
{
    Window window(int(state.range(0)));
    report(
        state,
        [&] {
            const double seconds = window.secondsOfKey(Qt::Key_Z, QStringLiteral("z"));
            window.secondsOfKey(Qt::Key_Backspace);
            return seconds;
        },
        state.range(0) == 1000 ? "goal: 120 ms" : "goal: 1 s");
}

/** From one row to all. */
void filterWidens(benchmark::State& state)
{
    Window window(int(state.range(0)));
    report(
        state,
        [&] {
            window.secondsOfKey(Qt::Key_Z, QStringLiteral("z"));
            return window.secondsOfKey(Qt::Key_Backspace);
        },
        state.range(0) == 1000 ? "goal: 120 ms" : "goal: 1 s");
}

void filterChangesNothing(benchmark::State& state)
{
    Window window(int(state.range(0)));
    VisibilityCounter counter(window.form);
    report(
        state,
        [&] {
            const double seconds = window.secondsOfKey(Qt::Key_S, QStringLiteral("s"));
            window.secondsOfKey(Qt::Key_Backspace);
            return seconds;
        },
        "goal: 0 widgets shown or hidden");
    state.counters["shown or hidden"] = counter.count;
}

void reset(benchmark::State& state)
{
    const int entries = int(state.range(0));
    const Json::Value map = document(entries);
    Json::Value other = map;
    for (Json::Value& section : other["eeprom_map"]) {
        for (Json::Value& setting : section["sub_map"]) {
            for (Json::Value& element : setting["value"])
                element = element.isString() ? Json::Value("Right")
                          : element.isInt()  ? Json::Value(element.asInt() ^ 3)
                                             : Json::Value(element.asDouble() + 1);
        }
    }
    Window window(entries);
    bool isOther = false;
    report(
        state,
        [&] {
            isOther = !isOther;
            return secondsOf([&] { window.form.resetToMap(isOther ? other : map); });
        },
        "every value changes");
}

std::size_t usedBytes()
{
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

template <typename Form>
void reportMemory(benchmark::State& state, const char* label)
{
    const int entries = int(state.range(0));
    const Json::Value map = document(entries);
    for (auto _ : state) {
        const std::size_t before = usedBytes();
        Form form(map);
        PaintWatch paint(form.widget());
        state.SetIterationTime(secondsOf([&] {
            form.show();
            paint.waitForPaint();
        }));
        state.counters["KiB a row"] = double(usedBytes() - before) / 1024 / entries;
    }
    state.SetLabel(label);
}

void memoryBare(benchmark::State& state)
{
    reportMemory<BareForm>(state, "for comparison");
}

void memory(benchmark::State& state)
{
    reportMemory<EepromGrama>(state, "goal: 16 KiB a row");
}

benchmark::internal::Benchmark* once(benchmark::internal::Benchmark* benchmark)
{
    return benchmark->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    const auto add = [](const char* name, void (*function)(benchmark::State&),
                        const std::vector<int>& sizes) {
        auto* const added = once(benchmark::RegisterBenchmark(name, function));
        for (const int size : sizes)
            added->Arg(size);
    };
    add("buildBare", buildBare, {100, 1000, 5000});
    add("build", build, {100, 1000, 5000});
    add("showBare", showBare, {100, 1000, 5000});
    add("show", show, {100, 1000, 5000});
    add("filterNarrows", filterNarrows, {1000, 5000});
    add("filterWidens", filterWidens, {1000, 5000});
    add("filterChangesNothing", filterChangesNothing, {1000, 5000});
    add("reset", reset, {1000, 5000});
    add("memoryBare", memoryBare, {1000, 5000});
    add("memory", memory, {1000, 5000});

    std::map<std::string, std::string> baselines;
    for (const char* size : {"/100", "/1000", "/5000"}) {
        baselines[std::string("build") + size] = std::string("buildBare") + size;
        baselines[std::string("show") + size] = std::string("showBare") + size;
    }
    return runWithBaselines(argc, argv, baselines);
}
