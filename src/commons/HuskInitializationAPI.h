#pragma once

class SmartAppDelegate;

// A shared part of the application that hooks itself into the delegate's phases.
class HuskInitializationAPI
{
public:
    virtual ~HuskInitializationAPI() = default;
    // Adds the part's own callbacks to the delegate's lists.
    virtual void finishInitialization(SmartAppDelegate &delegate) = 0;
};
