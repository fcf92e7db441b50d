#pragma once

/// Initialises libxml2, before several threads use it: its initialisation on first use is not safe
/// on all systems. Any thread; more than once does nothing.
void PrepareXmlForThreads();
