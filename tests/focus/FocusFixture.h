#pragma once

#include "AppFixture.h"
#include "FocusEngine.h"
#include "PreferenceKeys.h"

namespace velmora::test {

// A program on an ordinary working day at 10:00, the morning routine done, with
// one type of the user's own, "Work", before the meetings and default types.
struct FocusFixture : AppFixture
{
    static constexpr int kWork = 0, kMeetings = 1, kDefault = 2;

    FocusFixture()
    {
        fakes.preferences.setValue(keys::kUserdefaultsLastHabitShowDate, at(23, QTime(7, 0)));
        const QVariantMap work{{"name", "Work"}, {"color", "3366CC"}};
        fakes.preferences.setValue(keys::kUserdefaultsArrFocusTypes, QVariantList{work});
    }

    AppDelegate& start(const QTime& time = QTime(10, 0)) { return launch(at(23, time)); }
    FocusEngine& engine() { return app->focusEngine(); }
    // A block of "Work" started from its dialog.
    void startWork(int minutes)
    {
        engine().session().start(kWork, minutes, {}, FocusSession::Origin::Dialog);
    }

    bool isOn(int index) const { return app->state().arrFocusType.at(index).toMap().value("isOn").toBool(); }
};

} // namespace velmora::test
