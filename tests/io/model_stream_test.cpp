#include "io/model_stream.hpp"

#include <gtest/gtest.h>
#include <signal.h>

#include <cstdlib>
#include <filesystem>
#include <thread>

#include "io/io_fixture.hpp"

namespace zorvex::testing {
namespace {

std::string contents(const std::string& name, std::string* reason, bool* good) {
  StreamKind kind;
  const auto stream = open_model_stream(name, 'r', &kind, reason);
  *good = false;
  if (stream == nullptr) return "unopened";
  std::string text;
  char buffer[1000];
  while (const std::size_t got = stream->read(buffer, sizeof buffer)) text.append(buffer, got);
  *good = stream->close(reason);
  return text;
}

void store(const std::string& name, const std::string& text) {
  StreamKind kind;
  const auto stream = open_model_stream(name, 'w', &kind);
  ASSERT_NE(stream, nullptr) << name;
  EXPECT_TRUE(stream->write(text.data(), text.size())) << name;
  std::string reason;
  EXPECT_TRUE(stream->close(&reason)) << name << ": " << reason;
}

std::string long_text() {
  std::string text;
  for (int i = 0; i < 30000; ++i) text += std::to_string(i * 7919) + "\n";
  return text;
}

// PATH without the compressors, for the life of the object.
class EmptyPath {
 public:
  EmptyPath() : saved_(std::getenv("PATH")) { setenv("PATH", "/nonexistent", 1); }
  ~EmptyPath() { setenv("PATH", saved_.c_str(), 1); }

 private:
  std::string saved_;
};

TEST(ModelStream, RoundTripThroughEveryCompression) {
  const TempDir dir;
  const std::string text = long_text();
  for (const char* suffix : {"", ".gz", ".bz2", ".7z"}) {
    const std::string name = dir.file(std::string("model.mps") + suffix);
    store(name, text);
    store(name, text);  // once more over the old file: nothing is added to an archive
    std::string reason;
    bool good;
    EXPECT_EQ(contents(name, &reason, &good), text) << suffix;
    EXPECT_TRUE(good) << suffix << ": " << reason;
    StreamKind kind;
    EXPECT_NE(open_model_stream(name, 'r', &kind), nullptr);
    EXPECT_EQ(kind, *suffix == '\0' ? StreamKind::kFile : StreamKind::kPipe);
  }
}

TEST(ModelStream, NamesAreNeverInterpreted) {
  const TempDir dir;
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(dir.file(""));
  const std::string text = "some text\n";
  for (const std::string base : {"$(touch injected)", "`touch injected`", "a;touch injected;", "a|touch injected",
                                 "a\" > injected \"", "-rf", "--help", "@list", "a b'c", "*", "-siother", "a&b"}) {
    for (const char* suffix : {".gz", ".bz2", ".7z"}) {
      const std::string name = base + suffix;
      store(name, text);
      std::string reason;
      bool good;
      EXPECT_EQ(contents(name, &reason, &good), text) << name << ": " << reason;
      EXPECT_TRUE(good) << name;
      EXPECT_TRUE(std::filesystem::exists(name)) << name;
      std::filesystem::remove(name);
    }
  }
  EXPECT_TRUE(std::filesystem::is_empty("."));
  std::filesystem::current_path(before);
}

TEST(ModelStream, WhatCannotBeOpenedIsNull) {
  const TempDir dir;
  std::filesystem::create_directory(dir.file("folder"));
  std::filesystem::create_directory(dir.file("folder.gz"));
  spit(dir.file("m.zip"), "x");
  const std::string missing = dir.file("nowhere/model");
  struct {
    std::string name;
    char mode;
  } const cases[] = {{missing, 'r'},
                     {missing, 'w'},
                     {missing + ".gz", 'r'},
                     {missing + ".gz", 'w'},
                     {missing + ".bz2", 'r'},
                     {missing + ".7z", 'r'},
                     {missing + ".7z", 'w'},
                     {dir.file("folder"), 'r'},
                     {dir.file("folder"), 'w'},
                     {dir.file("folder.gz"), 'r'},
                     {dir.file("m.zip"), 'w'},
                     {"", 'r'}};
  for (const auto& c : cases) {
    std::string reason;
    EXPECT_EQ(open_model_stream(c.name, c.mode, nullptr, &reason), nullptr) << c.name;
    EXPECT_FALSE(reason.empty()) << c.name;
  }
}

TEST(ModelStream, MissingCompressorIsAnError) {
  const TempDir dir;
  store(dir.file("m.bz2"), "text");
  const EmptyPath no_programs;
  for (const char mode : {'r', 'w'}) {
    std::string reason;
    EXPECT_EQ(open_model_stream(dir.file("m.bz2"), mode, nullptr, &reason), nullptr);
    EXPECT_EQ(reason.find("cannot start bzip2"), 0u) << reason;
  }
}

TEST(ModelStream, DamagedDataFailAtClose) {
  const TempDir dir;
  for (const char* suffix : {".gz", ".bz2", ".7z"}) {
    const std::string whole = dir.file(std::string("whole") + suffix);
    store(whole, long_text());
    const std::string bytes = slurp(whole);
    const std::string cut = dir.file(std::string("cut") + suffix);
    const std::string plain = dir.file(std::string("plain") + suffix);
    const std::string empty = dir.file(std::string("empty") + suffix);
    spit(cut, bytes.substr(0, bytes.size() / 2));
    spit(plain, "NAME not compressed at all\n");
    spit(empty, "");
    for (const std::string& name : {cut, plain, empty}) {
      std::string reason;
      bool good = true;
      contents(name, &reason, &good);
      EXPECT_FALSE(good) << name;
      EXPECT_FALSE(reason.empty()) << name;
    }
  }
}

TEST(ModelStream, GzipMembersFollowEachOther) {
  const TempDir dir;
  store(dir.file("a.gz"), "first\n");
  store(dir.file("b.gz"), "second\n");
  spit(dir.file("both.gz"), slurp(dir.file("a.gz")) + slurp(dir.file("b.gz")));
  std::string reason;
  bool good;
  EXPECT_EQ(contents(dir.file("both.gz"), &reason, &good), "first\nsecond\n");
  EXPECT_TRUE(good);
}

TEST(ModelStream, ClosingEarlyIsNoFailure) {
  const TempDir dir;
  store(dir.file("m.bz2"), long_text());
  const auto stream = open_model_stream(dir.file("m.bz2"), 'r', nullptr);
  char buffer[100];
  ASSERT_GT(stream->read(buffer, sizeof buffer), 0u);
  EXPECT_TRUE(stream->close(nullptr));
}

// A compressor that dies must neither kill the host nor pass for success.
TEST(ModelStream, DyingCompressorIsReportedAndSigpipeStaysAway) {
  const TempDir dir;
  spit(dir.file("bzip2"), "#!/bin/sh\nexit 3\n");
  std::filesystem::permissions(dir.file("bzip2"), std::filesystem::perms::owner_all);
  const std::string saved = std::getenv("PATH");
  setenv("PATH", dir.file("").c_str(), 1);
  const auto stream = open_model_stream(dir.file("m.bz2"), 'w', nullptr);
  setenv("PATH", saved.c_str(), 1);
  ASSERT_NE(stream, nullptr);
  const std::string text = long_text();
  for (int i = 0; i < 50; ++i) (void)stream->write(text.data(), text.size());
  std::string reason;
  EXPECT_FALSE(stream->close(&reason));
  EXPECT_EQ(reason, "bzip2 failed with exit status 3");
  sigset_t pending;
  sigpending(&pending);
  EXPECT_FALSE(sigismember(&pending, SIGPIPE));
}

TEST(ModelStream, ManyThreadsShareNoPipe) {
  const TempDir dir;
  store(dir.file("m.bz2"), long_text());
  std::vector<std::thread> threads;
  std::atomic<int> right{0};
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 10; ++i) {
        std::string reason;
        bool good;
        right += contents(dir.file("m.bz2"), &reason, &good) == long_text() && good;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(right, 40);
}

}  // namespace
}  // namespace zorvex::testing
