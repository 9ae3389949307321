#pragma once

/// Lets an interrupt or a request to terminate end the event loop, so that the child is ended in
/// order. Call once, with the application object there.
void quitOnSignals();
