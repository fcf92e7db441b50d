#include "workbench/record/LinePlugins.h"

#include <algorithm>

namespace {

using Kind = FrameEvent::Kind;

/// The plugin's ID in the path of its library: the file's name without its extension.
std::string NameIn(const std::string& path) {
  const std::size_t folder = path.find_last_of("/\\");
  const std::string file = folder == std::string::npos ? path : path.substr(folder + 1);
  return file.substr(0, file.rfind('.'));
}

}  // namespace

std::optional<std::uint64_t> LinePlugins::Take(FrameEvent& event) {
  switch (event.kind) {
    case Kind::kPluginsStartBegin:
      m_startSeen = true;
      return 0;
    case Kind::kPluginsStopBegin:
      m_stopSeen = true;
      return 0;
    case Kind::kLoadBegin:
    case Kind::kLoadSucceeded:
    case Kind::kLoadFailed: {
      const Thread thread = OfPath(event.path);
      if (thread && event.kind == Kind::kLoadFailed) m_releasing[NameIn(event.path)];
      return thread;
    }
    case Kind::kInitThrew:
    case Kind::kInitThrewNoException:
    case Kind::kInitMissing:
      return OfReason(m_inInit, m_startSeen);
    case Kind::kUnInitThrew:
    case Kind::kUnInitThrewNoException:
    case Kind::kUnInitMissing: {
      if (m_stopSeen && m_inUnInit.size() == 1) m_refused.insert(*m_inUnInit.begin());
      return OfReason(m_inUnInit, m_stopSeen);
    }
    case Kind::kFreeBegin:
      return OfRelease();
    case Kind::kFreeEnd:
      return std::nullopt;  // nothing is made of it
    case Kind::kNamelessNotCounted:
      return ThreadOf("");
    case Kind::kLoadTaskBegin:
    case Kind::kInitBegin:
    case Kind::kInitSucceeded:
    case Kind::kInitFailed:
    case Kind::kStartCounted:
    case Kind::kStartFailedCounted:
    case Kind::kStartCountedSomehow:
    case Kind::kStartAbandoned:
    case Kind::kNotLoadedCounted:
    case Kind::kLoadSkipped:
    case Kind::kUnloadTaskBegin:
    case Kind::kUnInitBegin:
    case Kind::kUnInitEnd:
    case Kind::kStopCounted:
    case Kind::kStopRefusedCounted:
    case Kind::kStopCountedSomehow:
    case Kind::kNothingToStopCounted:
    case Kind::kUnloadSkipped:
      OnPlugin(event);
      return ThreadOf(event.plugin);
    default:
      return 0;
  }
}

std::uint64_t LinePlugins::ThreadOf(const std::string& plugin) {
  return m_threads.emplace(plugin, m_threads.size() + 1).first->second;
}

LinePlugins::Thread LinePlugins::OfPath(const std::string& path) {
  const std::string name = NameIn(path);
  const auto thread = m_threads.find(name);
  if (thread != m_threads.end()) return thread->second;
  // A name that contains a separator: the only plugin that is being loaded and ends so.
  const auto ends = [&](const std::string& plugin) {
    return plugin.size() > name.size() &&
           plugin.compare(plugin.size() - name.size(), name.size(), name) == 0;
  };
  if (std::count_if(m_loading.begin(), m_loading.end(), ends) != 1) return std::nullopt;
  return ThreadOf(*std::find_if(m_loading.begin(), m_loading.end(), ends));
}

LinePlugins::Thread LinePlugins::OfReason(const std::set<std::string>& candidates, bool complete) {
  if (complete && candidates.size() == 1) return ThreadOf(*candidates.begin());
  m_unsure.insert(candidates.begin(), candidates.end());
  return std::nullopt;
}

/// The line on the release of a library. Belongs to the only plugin that has ended its UnInit, or
/// whose library could not be loaded, and has neither released nor been counted.
LinePlugins::Thread LinePlugins::OfRelease() {
  const auto isOpen = [](const auto& plugin) { return plugin.second != Release::kDone; };
  const auto open = std::find_if(m_releasing.begin(), m_releasing.end(), isOpen);
  const bool isOne = std::count_if(m_releasing.begin(), m_releasing.end(), isOpen) == 1;
  if (m_stopSeen && isOne && open->second == Release::kNone) {
    open->second = Release::kDone;
    return ThreadOf(open->first);
  }
  for (auto& [plugin, release] : m_releasing) {
    if (release == Release::kNone) release = Release::kUnsure;
  }
  return std::nullopt;
}

void LinePlugins::OnPlugin(FrameEvent& event) {
  switch (event.kind) {
    case Kind::kLoadTaskBegin:
      m_loading.insert(event.plugin);
      return;
    case Kind::kInitBegin:
      m_loading.erase(event.plugin);
      m_inInit.insert(event.plugin);
      return;
    case Kind::kInitSucceeded:
    case Kind::kInitFailed:
      m_inInit.erase(event.plugin);
      m_initialised[event.plugin] = event.kind == Kind::kInitSucceeded;
      return;
    case Kind::kStartCountedSomehow: {
      const auto ended = m_initialised.find(event.plugin);
      if (ended == m_initialised.end()) return;
      event.kind = ended->second ? Kind::kStartCounted : Kind::kStartFailedCounted;
      return;
    }
    case Kind::kNotLoadedCounted:
      m_loading.erase(event.plugin);
      m_releasing.erase(event.plugin);
      return;
    case Kind::kUnInitBegin:
      m_inUnInit.insert(event.plugin);
      return;
    case Kind::kUnInitEnd:
      m_inUnInit.erase(event.plugin);
      m_releasing[event.plugin];
      return;
    case Kind::kStopCountedSomehow:
      OnCountedInStop(event);
      return;
    default:
      m_loading.erase(event.plugin);
      m_releasing.erase(event.plugin);
      return;
  }
}

/// A plugin that stops releases its library before it is counted, one that refuses does not.
void LinePlugins::OnCountedInStop(FrameEvent& event) {
  const auto release = m_releasing.find(event.plugin);
  if (release == m_releasing.end() || !m_stopSeen) return;
  if (m_refused.count(event.plugin) != 0 || release->second == Release::kNone) {
    event.kind = Kind::kStopRefusedCounted;
  } else if (release->second == Release::kDone) {
    event.kind = Kind::kStopCounted;
  }
  m_releasing.erase(release);
}
