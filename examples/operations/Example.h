#pragma once

// What the examples in this folder share. Each is a function that shows one operation or a few
// siblings, and returns whether it came to what it should; main.cpp runs them all.
#include <OrvoAPI/OrvoAPI.h>

#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using Outcome = orvo::Future<bool>;

/// What an app has once it has begun.
struct App {
  orvo::URL api;
  orvo::URL resources;
  std::shared_ptr<const orvo::Context> context;
};

/// Where the callbacks run: here the library's own thread runs it, in an app the event loop.
inline const std::shared_ptr<orvo::DispatchQueue>& mainQueue() {
  static const std::shared_ptr<orvo::DispatchQueue> queue = orvo::MainQueue::shared();
  return queue;
}

/// Stands for drawing.
inline void show(const std::string& text) { std::printf("  %s\n", text.c_str()); }

/// An example by its name.
struct Example {
  const char* name;
  Outcome (*run)(const App& app);
};

/// The examples of each source.
std::vector<Example> bootstrapExamples();
std::vector<Example> fetchExamples();
std::vector<Example> capabilityExamples();
std::vector<Example> listExamples();
std::vector<Example> futureExamples();
std::vector<Example> resultExamples();
std::vector<Example> networkExamples();
std::vector<Example> queueExamples();
std::vector<Example> monitorExamples();
