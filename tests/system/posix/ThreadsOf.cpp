#include "tests/system/posix/ThreadsOf.h"

#include <filesystem>
#include <fstream>

std::multimap<std::string, pid_t> ThreadsOf(pid_t process) {
  std::multimap<std::string, pid_t> threads;
  const std::filesystem::path tasks = "/proc/" + std::to_string(process) + "/task";
  for (const auto& task : std::filesystem::directory_iterator(tasks)) {
    std::string name;
    std::getline(std::ifstream(task.path() / "comm"), name);
    threads.emplace(name, std::stoi(task.path().filename()));
  }
  return threads;
}
