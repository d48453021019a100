// Writes one of the program's files through the program's own code, in a loop
// alternating between two known contents, and prints a line after each write.
// The durability test kills it at random moments. Usage:
//   velmora-durability-writer <log|preferences|settings|plist> <folder> <first>

#include "FakePorts.h"
#include "Samples.h"
#include "SettingsPreferences.h"
#include "SyncTimestamps.h"

#include <cstdio>
#include <QDir>

using namespace velmora;

int main(int argc, char** argv)
{
    if (argc < 4)
        return 2;
    const QString kind = QString::fromLocal8Bit(argv[1]);
    const QDir folder(QString::fromLocal8Bit(argv[2]));
    test::FakeClock clock(durability::kTimes[0]);
    SettingsPreferences preferences(folder.filePath(QStringLiteral("velmora.conf")));
    test::MemoryPreferences syncFolder;
    syncFolder.setValue(keys::kUserdefaultsSelectedFolder, folder.path());
    const SyncTimestamps timestamps(syncFolder, clock);
    const UsageLog log(clock, folder.filePath(QStringLiteral("vlmrStats.csv")));
    
    if (kind == u"log" && !log.createIfMissing())
        return 1;
    // Ends when the test kills it, or with SIGPIPE when the test is gone.
    for (int i = std::atoi(argv[3]);; ++i) {
        if (kind == u"log") {
            log.addEntryInCsv(durability::usageRow(i));
        } else if (kind == u"preferences") {
            const QVariantList values = durability::preferenceValues(i % 2);
            for (int k = 0; k < values.size(); ++k)
                preferences.setValue(durability::kPreferenceKeys[k], values[k]);
            preferences.sync();
        } else if (kind == u"settings") {
            preferences.setValue(keys::kUserdefaultsSelectedJson, durability::settingsDocument(i % 2));
            preferences.sync();
        } else {
            clock.set(durability::kTimes[i % 2]);
            timestamps.writeMorningRoutineDate();
            timestamps.writeEveningRoutineDate();
        }
        std::printf("%d\n", i);
        std::fflush(stdout);
    }
}
