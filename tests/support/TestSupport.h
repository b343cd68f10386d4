#pragma once

#include <QString>
#include <QTemporaryDir>

#include <functional>

// Helpers shared by the tests: a private preferences file, waiting with the event loop running.
namespace TestSupport {

// Points the standard user defaults at a file inside a temporary folder that lives for the
// whole test run. Call before anything touches the store.
void useTemporaryUserDefaults();

// Spins the event loop until the predicate holds or the timeout passes; returns the predicate.
bool waitUntil(const std::function<bool()> &predicate, int timeoutMs = 10000);

} // namespace TestSupport
