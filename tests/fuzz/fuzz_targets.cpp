// Every reader of outside input, fed arbitrary bytes. Built once per target with
// VELMORA_FUZZ_TARGET naming it (libFuzzer), and once as fuzz_replay, which runs
// every target over the files of corpus/<target>/ as a regular test.
#include "DayTimes.h"
#include "DurationTexts.h"
#include "FeedbackUpload.h"
#include "FocusSummary.h"
#include "LocalBrowserTabs.h"
#include "menuViewController.h"
#include "NativeFrames.h"
#include "RecordFormats.h"
#include "RunState.h"
#include "SettingsLoader.h"
#include "SettingsValidation.h"
#include "SyncTimestamps.h"
#include "TextCatalogue.h"
#include "urlValidation.h"

#include <cstdio>
#include <cstdlib>
#include <map>
#include <QDir>
#include <QJsonDocument>
#include <string>

using namespace velmora;

namespace {

QJsonObject objectOf(const QByteArray& data)
{
    return QJsonDocument::fromJson(data).object();
}

void settings(const QByteArray& data)
{
    RunState state;
    applySettingsDocument(state, objectOf(data));
    anyItemHasPage(state);
    for (const std::optional<Time>& time : {state.startTime, state.shutOffTime}) {
        if (time)
            instantOn(QDate(2026, 3, 29), *time);
    }
    auto durations = [](const auto& items) {
        for (const auto& item : items) {
            getStringTime(item.durationSeconds);
            getStringTimeFromSeconds(item.durationSeconds);
            clockText(item.durationSeconds);
        }
    };
    durations(state.arrAllMorningHabits);
    durations(state.arrAllbreakActivities);
}

void catalogue(const QByteArray& data)
{
    TextCatalogue texts;
    texts.setConfigjson(objectOf(data));
    texts.readConfigFile();
    getstartActivityButtonText(texts, 90, QStringLiteral("Yoga"));
    getStartBreakActivityTitleText(texts, 3600, QStringLiteral("Yoga"));
    texts.text({"focusInfo", "pomodoro"}, "title", QString());
    texts.object({"shutOffTimeInfo"}, "shutOffAbortInfo");
}

void usageLog(const QByteArray& data)
{
    summarize(csvFromBytes(data), QDateTime(QDate(2026, 1, 1), QTime(6, 0)));
}

void syncPlist(const QByteArray& data)
{
    const auto entries = SyncTimestamps::parsePlist(data);
    if (!entries)
        return;
    // Writing a date back keeps everything else the file held: neither date may get lost.
    const auto rewritten = SyncTimestamps::parsePlist(SyncTimestamps::writePlist(*entries));
    if (!rewritten)
        __builtin_trap();
    for (const QString& key : {SyncTimestamps::kMorning, SyncTimestamps::kEvening}) {
        const QDateTime date = parseRecordDate(entries->value(key));
        if (date.isValid() && parseRecordDate(rewritten->value(key)) != date)
            __builtin_trap();
    }
}

void hostFrames(const QByteArray& data)
{
    // The first byte cuts the rest into pieces, as a pipe might deliver them.
    const qsizetype piece = data.isEmpty() ? 1 : quint8(data[0]) % 16 + 1;
    frames::FrameReader reader(4096);
    QByteArray frame;
    for (qsizetype at = 1; at < data.size(); at += piece) {
        reader.feed(QByteArrayView(data).sliced(at, qMin(piece, data.size() - at)));
        for (auto status = reader.next(&frame); status != frames::FrameReader::Status::NeedMore;
             status = reader.next(&frame)) {
            if (status == frames::FrameReader::Status::Frame)
                frames::parse(frame);
        }
    }
}

void bridgeMessage(const QByteArray& data)
{
    if (const auto message = frames::parse(data))
        readHostMessage(*message);
}

void httpBodies(const QByteArray& data)
{
    FeedbackUpload::isAccepted(200, data);
    if (const auto answer = readVersionAnswer(data))
        isNewerRelease(answer->latest, QStringLiteral("0.1.0"));
}

// The schema on the first line, the document after it.
void schema(const QByteArray& data)
{
    const qsizetype split = data.indexOf('\n');
    if (split < 0)
        return;
    validateSettings(objectOf(data.sliced(split + 1)), objectOf(data.first(split))).describe();
}

// Not a reader but a rule: an address whose host is on the list is refused
// whatever its path, query and fragment hold, judged by the host the browser
// parsed or, without one, by the address alone; an allowed host stays allowed.
void addressRules(const QByteArray& data)
{
    if (data.isEmpty())
        return;
    static const QStringList blocked =
        QStringLiteral("news.test *.video.test https://www.feed.test/any shop").split(u' ');
    static const QStringList onList =
        QStringLiteral("news.test www.news.test a.video.test feed.test shop.example m.shop.test").split(u' ');
    static const QStringList allowed = QStringLiteral("docs.test mail.example 127.0.0.1").split(u' ');
    static const char* const separators[] = {"/", "?", "#", "/%zz?"};
    const quint8 pick = quint8(data[0]);
    const QString rest = QLatin1StringView(separators[pick >> 6]) + QString::fromUtf8(data.sliced(1));
    const QString& host = onList.at(pick % onList.size());
    const QString address = QStringLiteral("https://") + host + rest;
    const QString& good = allowed.at(pick % allowed.size());
    const QString goodAddress = QStringLiteral("http://") + good + rest;
    if (!matchesAnyEntry(address, host, blocked) || !matchesAnyEntry(address, QString(), blocked) ||
        matchesAnyEntry(goodAddress, good, blocked) || !matchesAnyEntry(goodAddress, good, allowed)) {
        std::fprintf(stderr, "address rule broken for %s\n", qPrintable(address));
        std::abort();
    }
}

using Target = void (*)(const QByteArray&);
const std::map<std::string, Target> targets = {
    {"settings", settings},      {"catalogue", catalogue},    {"usage_log", usageLog},
    {"sync_plist", syncPlist},   {"host_frames", hostFrames}, {"bridge_message", bridgeMessage},
    {"http_bodies", httpBodies}, {"schema", schema},          {"address_rules", addressRules},
};

} // namespace

#ifdef VELMORA_FUZZ_TARGET
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const Target target = targets.at(VELMORA_FUZZ_TARGET);
    target(QByteArray::fromRawData(reinterpret_cast<const char*>(data), qsizetype(size)));
    return 0;
}
#else
// fuzz_replay <corpus folder>: every file of every target's folder.
int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    int files = 0;
    for (const auto& [name, target] : targets) {
        const QDir folder(QString::fromLocal8Bit(argv[1]) + u'/' + QString::fromStdString(name));
        for (const QString& file : folder.entryList(QDir::Files)) {
            QFile input(folder.filePath(file));
            if (!input.open(QIODevice::ReadOnly))
                return 1;
            std::printf("%s/%s\n", name.c_str(), qPrintable(file));
            target(input.readAll());
            ++files;
        }
    }
    return files > 0 ? 0 : 1;
}
#endif
