#pragma once

#include "AppFixture.h"
#include "LockWindows.h"
#include "ViewController.h"
#include "WayOut.h"

namespace velmora::test {

// A launched program with the ways out laid into its lock window, the way the
// application does it. Uploads go to a webhook of the test's own.
struct WayOutFixture : AppFixture
{
    WayOut* wayOut = nullptr;

    explicit WayOutFixture(const QByteArray& document = dayDocument())
        : AppFixture(document)
    {
        catalogue = R"({"common": {"webhookUrl": "https://hooks.example/velmora"}})";
    }

    AppDelegate& start(const QDateTime& when)
    {
        AppDelegate& a = launch(when);
        wayOut = &a.wayOut();
        return a;
    }
    AppDelegate& morningUp()
    {
        AppDelegate& a = AppFixture::morningUp();
        wayOut = &a.wayOut();
        return a;
    }
};

} // namespace velmora::test
