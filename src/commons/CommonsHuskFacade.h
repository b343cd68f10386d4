#pragma once

#include "HuskInitializationAPI.h"
#include "LaunchManager.h"

class QWidget;

// The parts every application has: the launch bookkeeping, and the standard entries of the Help
// group (the web site when the build names one, and the About box).
class CommonsHuskFacade : public HuskInitializationAPI
{
public:
    // The launch manager keeps its counts under "LaunchManager" in the standard user defaults.
    CommonsHuskFacade();

    // Adds the Help entries (when the application has standard menus), and the counting of this
    // launch, with its due launch functions, to didFinishLaunching.
    void finishInitialization(SmartAppDelegate &delegate) override;

    // Add launch functions here before the launch finishes.
    LaunchManager launchManager;

    // Shows the About box (not modal) over the given window and returns it.
    static QWidget *showAbout(const SmartAppDelegate &delegate, QWidget *parent);

private:
    static void addHelpEntries(SmartAppDelegate &delegate);
};
