// Measures the chunk stream against plain buffered file I/O of the same bytes.
//
// The file is one top chunk holding one small chunk per 16-byte record (four uint32), about
// 64 MiB in all. The plain variants write and read exactly the same bytes with std::FILE,
// a 64 KiB stdio buffer and one fwrite/fread per record, so the ratio shows what the
// framing, the length patching and the reader's checks cost. Memory variants show the
// chunk stream's own cost without the file system. The files live in a fresh directory
// under the system's temporary directory, removed at exit. At the end the program prints
// the time ratios chunk / plain.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <unistd.h>
#include <boost/filesystem.hpp>

#include <orlo/support/scene_load.h>
#include <orlo/support/scene_save.h>

namespace {

constexpr std::uint32_t kTopId = 0x05;
constexpr std::uint32_t kRecordId = 0x15;
constexpr std::size_t kHeaderBytes = 12;
constexpr std::size_t kPayloadBytes = 16;
constexpr std::size_t kRecordBytes = kHeaderBytes + kPayloadBytes;
constexpr std::size_t kTargetBytes = std::size_t{64} << 20;
constexpr std::size_t kRecords = (kTargetBytes - kHeaderBytes) / kRecordBytes;
constexpr std::size_t kFileBytes = kHeaderBytes + kRecords * kRecordBytes;
constexpr std::size_t kStdioBuffer = std::size_t{64} << 10;

boost::filesystem::path g_dir;

std::string PathOf(const char* name) { return (g_dir / name).string(); }

void Record(std::uint32_t i, std::uint32_t out[4]) {
  out[0] = i;
  out[1] = i * 3u;
  out[2] = ~i;
  out[3] = i ^ 0x5A5A5A5Au;
}

void PutLE32(std::uint32_t value, std::uint8_t* out) {
  for (int i = 0; i < 4; ++i) out[i] = static_cast<std::uint8_t>(value >> (8 * i));
}
void PutLE64(std::uint64_t value, std::uint8_t* out) {
  for (int i = 0; i < 8; ++i) out[i] = static_cast<std::uint8_t>(value >> (8 * i));
}
std::uint32_t GetLE32(const std::uint8_t* in) {
  return static_cast<std::uint32_t>(in[0]) | static_cast<std::uint32_t>(in[1]) << 8 |
         static_cast<std::uint32_t>(in[2]) << 16 | static_cast<std::uint32_t>(in[3]) << 24;
}
std::uint64_t GetLE64(const std::uint8_t* in) {
  return static_cast<std::uint64_t>(GetLE32(in)) | static_cast<std::uint64_t>(GetLE32(in + 4))
                                                       << 32;
}

void WriteChunks(Orlo::SceneSave& save) {
  save.BeginChunk(kTopId);
  std::uint32_t values[4];
  for (std::uint32_t i = 0; i < kRecords; ++i) {
    Record(i, values);
    save.BeginChunk(kRecordId);
    save.WriteUInt32(values[0]);
    save.WriteUInt32(values[1]);
    save.WriteUInt32(values[2]);
    save.WriteUInt32(values[3]);
    save.EndChunk();
  }
  save.EndChunk();
}

// Reads the records back and returns their sum; aborts on anything unexpected.
std::uint64_t ReadChunks(Orlo::SceneLoad& load) {
  std::uint64_t sum = 0;
  std::size_t count = 0;
  if (load.OpenChunk() != Orlo::SceneLoad::kChunkOpened) std::abort();
  while (load.OpenChunk() == Orlo::SceneLoad::kChunkOpened) {
    if (load.CurChunkID() != kRecordId) std::abort();
    std::uint32_t values[4];
    load.ReadUInt32(values[0]);
    load.ReadUInt32(values[1]);
    load.ReadUInt32(values[2]);
    load.ReadUInt32(values[3]);
    sum += values[0] + values[1] + values[2] + values[3];
    ++count;
    load.CloseChunk();
  }
  load.CloseChunk();
  if (load.HasError() || count != kRecords) std::abort();
  return sum;
}

void WritePlain(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) std::abort();
  std::setvbuf(file, nullptr, _IOFBF, kStdioBuffer);
  std::uint8_t top[kHeaderBytes];
  PutLE32(kTopId, top);
  PutLE64(kRecords * kRecordBytes, top + 4);
  std::fwrite(top, 1, sizeof(top), file);
  std::uint8_t record[kRecordBytes];
  PutLE32(kRecordId, record);
  PutLE64(kPayloadBytes, record + 4);
  std::uint32_t values[4];
  for (std::uint32_t i = 0; i < kRecords; ++i) {
    Record(i, values);
    for (int v = 0; v < 4; ++v) PutLE32(values[v], record + kHeaderBytes + 4 * v);
    std::fwrite(record, 1, sizeof(record), file);
  }
  if (std::fclose(file) != 0) std::abort();
}

std::uint64_t ReadPlain(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) std::abort();
  std::setvbuf(file, nullptr, _IOFBF, kStdioBuffer);
  std::uint8_t top[kHeaderBytes];
  if (std::fread(top, 1, sizeof(top), file) != sizeof(top) || GetLE32(top) != kTopId) {
    std::abort();
  }
  std::uint64_t left = GetLE64(top + 4);
  std::uint64_t sum = 0;
  std::uint8_t record[kRecordBytes];
  while (left >= kRecordBytes && std::fread(record, 1, sizeof(record), file) == sizeof(record)) {
    if (GetLE32(record) != kRecordId || GetLE64(record + 4) != kPayloadBytes) std::abort();
    for (int v = 0; v < 4; ++v) sum += GetLE32(record + kHeaderBytes + 4 * v);
    left -= kRecordBytes;
  }
  std::fclose(file);
  if (left != 0) std::abort();
  return sum;
}

std::vector<std::uint8_t> ReadWholeFile(const std::string& path) {
  std::vector<std::uint8_t> bytes(kFileBytes + 1);
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (file == nullptr) std::abort();
  bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file));
  std::fclose(file);
  return bytes;
}

void SetBytes(benchmark::State& state) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                          static_cast<std::int64_t>(kFileBytes));
}

void BM_ChunkWriteFile(benchmark::State& state) {
  const std::string path = PathOf("chunk_write.scene");
  for (auto _ : state) {
    Orlo::Status status;
    Orlo::SceneSave save(path.c_str(), &status);
    WriteChunks(save);
    if (!save.Finish().IsOk()) std::abort();
  }
  SetBytes(state);
}

void BM_PlainWriteFile(benchmark::State& state) {
  const std::string path = PathOf("plain_write.bin");
  for (auto _ : state) WritePlain(path);
  SetBytes(state);
}

void BM_ChunkReadFile(benchmark::State& state) {
  const std::string path = PathOf("source.scene");
  for (auto _ : state) {
    Orlo::Status status;
    Orlo::SceneLoad load(path.c_str(), &status);
    benchmark::DoNotOptimize(ReadChunks(load));
  }
  SetBytes(state);
}

void BM_PlainReadFile(benchmark::State& state) {
  const std::string path = PathOf("source.scene");
  for (auto _ : state) benchmark::DoNotOptimize(ReadPlain(path));
  SetBytes(state);
}

void BM_ChunkWriteMemory(benchmark::State& state) {
  for (auto _ : state) {
    Orlo::SceneSave save;
    WriteChunks(save);
    benchmark::DoNotOptimize(save.TakeBytes().data());
  }
  SetBytes(state);
}

void BM_ChunkReadMemory(benchmark::State& state) {
  const std::vector<std::uint8_t> bytes = ReadWholeFile(PathOf("source.scene"));
  for (auto _ : state) {
    state.PauseTiming();
    std::vector<std::uint8_t> copy = bytes;  // the reader takes its image by value
    state.ResumeTiming();
    Orlo::SceneLoad load(std::move(copy));
    benchmark::DoNotOptimize(ReadChunks(load));
  }
  SetBytes(state);
}

BENCHMARK(BM_ChunkWriteFile)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_PlainWriteFile)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_ChunkReadFile)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_PlainReadFile)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_ChunkWriteMemory)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_ChunkReadMemory)->Unit(benchmark::kMillisecond)->UseRealTime();

// Keeps the mean real time per iteration of every benchmark (over all its repetitions) so
// that the ratios can be printed at the end.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  // Colours only on a terminal, as the library's own reporter does by default.
  RatioReporter() : ConsoleReporter(isatty(STDOUT_FILENO) ? OO_Defaults : OO_Tabular) {}

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration || run.iterations <= 0) continue;
      Totals& totals = m_totals[run.run_name.str()];
      totals.seconds += run.real_accumulated_time;
      totals.iterations += static_cast<double>(run.iterations);
    }
    ConsoleReporter::ReportRuns(runs);
  }

  void PrintRatio(const char* what, const std::string& chunk, const std::string& plain) const {
    const auto a = m_totals.find(chunk);
    const auto b = m_totals.find(plain);
    if (a == m_totals.end() || b == m_totals.end()) return;
    const double chunk_seconds = a->second.seconds / a->second.iterations;
    const double plain_seconds = b->second.seconds / b->second.iterations;
    std::printf("%s: chunk stream %.1f ms, plain stdio %.1f ms, ratio %.2f\n", what,
                chunk_seconds * 1e3, plain_seconds * 1e3, chunk_seconds / plain_seconds);
  }

 private:
  struct Totals {
    double seconds = 0;
    double iterations = 0;
  };
  std::map<std::string, Totals> m_totals;
};

}  // namespace

int main(int argc, char** argv) {
  g_dir = boost::filesystem::temp_directory_path() /
          boost::filesystem::unique_path("orlo-chunk-bench-%%%%-%%%%");
  boost::filesystem::create_directories(g_dir);

  // The source for the read benchmarks, and a check that both writers give the same bytes.
  {
    Orlo::Status status;
    Orlo::SceneSave save(PathOf("source.scene").c_str(), &status);
    WriteChunks(save);
    if (!save.Finish().IsOk()) return 1;
    WritePlain(PathOf("plain_check.bin"));
    if (ReadWholeFile(PathOf("source.scene")) != ReadWholeFile(PathOf("plain_check.bin")) ||
        boost::filesystem::file_size(PathOf("source.scene")) != kFileBytes) {
      std::fprintf(stderr, "the chunk writer and the plain writer disagree\n");
      return 1;
    }
    boost::filesystem::remove(PathOf("plain_check.bin"));
  }
  std::printf("file: %zu records of %zu bytes, %zu bytes in all\n", kRecords, kRecordBytes,
              kFileBytes);

  benchmark::Initialize(&argc, argv);
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintRatio("write to file", "BM_ChunkWriteFile/real_time",
                      "BM_PlainWriteFile/real_time");
  reporter.PrintRatio("read from file", "BM_ChunkReadFile/real_time", "BM_PlainReadFile/real_time");
  benchmark::Shutdown();
  boost::filesystem::remove_all(g_dir);
  return 0;
}
