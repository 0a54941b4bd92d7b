#pragma once

class PluginUIBase;

// The plug-in's two entries. Create builds the one main window on its first call and
// returns the same object afterwards; all of Bramble reaches the window through it.
// Release deletes the window; the next Create builds a new one.
extern "C" {
__attribute__((visibility("default"))) PluginUIBase* Create();
__attribute__((visibility("default"))) void Release();
}
