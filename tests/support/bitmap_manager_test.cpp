#include <gtest/gtest.h>
#include <orlo/support/bitmap_manager.h>

#include <memory>
#include <string>
#include <vector>

namespace Orlo {
namespace {

TEST(BitmapManagerTest, NewManagerHasNoDirectories) {
  const BitmapManager manager;
  EXPECT_EQ(manager.GetNumDirectories(), 0);
  EXPECT_TRUE(manager.GetDirectories().empty());
  EXPECT_EQ(manager.GetDirectory(0), "");
}

TEST(BitmapManagerTest, AddDirectoryAppendsInOrderAndReturnsTrue) {
  BitmapManager manager;
  EXPECT_TRUE(manager.AddDirectory("/scenes/city"));
  EXPECT_TRUE(manager.AddDirectory("."));
  EXPECT_TRUE(manager.AddDirectory("textures"));
  EXPECT_EQ(manager.GetNumDirectories(), 3);
  EXPECT_EQ(manager.GetDirectory(0), "/scenes/city");
  EXPECT_EQ(manager.GetDirectory(1), ".");
  EXPECT_EQ(manager.GetDirectory(2), "textures");
  EXPECT_EQ(manager.GetDirectories(), (std::vector<std::string>{"/scenes/city", ".", "textures"}));
}

TEST(BitmapManagerTest, AddDirectoryRefusesADirectoryAlreadyListed) {
  BitmapManager manager;
  EXPECT_TRUE(manager.AddDirectory("maps"));
  EXPECT_TRUE(manager.AddDirectory("other"));
  EXPECT_FALSE(manager.AddDirectory("maps"));
  EXPECT_EQ(manager.GetDirectories(), (std::vector<std::string>{"maps", "other"}));
}

TEST(BitmapManagerTest, DirectoriesAreComparedAsWritten) {
  BitmapManager manager;
  EXPECT_TRUE(manager.AddDirectory("maps"));
  EXPECT_TRUE(manager.AddDirectory("maps/"));
  EXPECT_TRUE(manager.AddDirectory("Maps"));
  EXPECT_EQ(manager.GetNumDirectories(), 3);
}

TEST(BitmapManagerTest, AddDirectoryRefusesNullAndEmptyStrings) {
  BitmapManager manager;
  EXPECT_FALSE(manager.AddDirectory(nullptr));
  EXPECT_FALSE(manager.AddDirectory(""));
  EXPECT_EQ(manager.GetNumDirectories(), 0);
}

TEST(BitmapManagerTest, AddDirectoryKeepsItsOwnCopyOfTheString) {
  BitmapManager manager;
  {
    std::string temporary = "/tmp/scene";
    EXPECT_TRUE(manager.AddDirectory(temporary.c_str()));
    temporary.assign("changed");
  }
  EXPECT_EQ(manager.GetDirectory(0), "/tmp/scene");
}

TEST(BitmapManagerTest, GetDirectoryOutOfRangeIsEmpty) {
  BitmapManager manager;
  manager.AddDirectory("a");
  EXPECT_EQ(manager.GetDirectory(-1), "");
  EXPECT_EQ(manager.GetDirectory(1), "");
  EXPECT_EQ(manager.GetDirectory(1000000), "");
  EXPECT_EQ(manager.GetDirectory(0), "a");
}

TEST(BitmapManagerTest, ClearDirectoriesEmptiesTheListAndAllowsAddingAgain) {
  BitmapManager manager;
  manager.AddDirectory("a");
  manager.AddDirectory("b");
  manager.ClearDirectories();
  EXPECT_EQ(manager.GetNumDirectories(), 0);
  EXPECT_TRUE(manager.AddDirectory("a"));
  EXPECT_EQ(manager.GetDirectories(), (std::vector<std::string>{"a"}));
}

// A host may derive its own manager; the engine calls it through the base class.
class RecordingManager : public BitmapManager {
 public:
  bool AddDirectory(const char* directory) override {
    m_seen.push_back(directory != nullptr ? directory : "(null)");
    return BitmapManager::AddDirectory(directory);
  }
  std::vector<std::string> m_seen;
};

TEST(BitmapManagerTest, DerivedManagerIsReachedThroughTheBaseClass) {
  auto derived = std::make_unique<RecordingManager>();
  RecordingManager* raw = derived.get();
  std::unique_ptr<BitmapManager> manager = std::move(derived);
  EXPECT_TRUE(manager->AddDirectory("x"));
  EXPECT_FALSE(manager->AddDirectory("x"));
  EXPECT_EQ(raw->m_seen, (std::vector<std::string>{"x", "x"}));
  EXPECT_EQ(manager->GetNumDirectories(), 1);
}

}  // namespace
}  // namespace Orlo
