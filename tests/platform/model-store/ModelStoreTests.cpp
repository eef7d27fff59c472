#include "Tessarune/platform/disk/PosixFileSystem.h"
#include "Tessarune/platform/model-store/Checksums.h"
#include "Tessarune/platform/model-store/ModelStore.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>

using namespace tessarune;
using namespace tessarune::testing;

namespace {

class ModelStoreTest : public ::testing::Test {
  protected:
    ModelStoreTest() : store_(disk_, folder_ / "own", {folder_ / "shipped"}) {}

    static void write(const std::filesystem::path& path, const std::string& text) {
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << text;
    }
    StoredModel add(ModelStore& store, const std::string& name, const std::string& content) {
        write(store.partialFolder(ModelKind::speech, name) / "a.ort", content);
        return store.adopt(ModelKind::speech, name, {"a.ort"}, {{"architecture", "2"}});
    }

    TemporaryFolder folder_;
    PosixFileSystem disk_;
    ModelStore store_;
};

} // namespace

TEST_F(ModelStoreTest, OwnModelHidesTheShippedOneUnlessItIsDamaged) {
    ModelStore shipped(disk_, folder_ / "shipped", {});
    add(shipped, "tiny-en", "shipped");
    EXPECT_FALSE(store_.find(ModelKind::speech, "tiny-en").value().isRemovable);
    EXPECT_THROW(store_.remove(ModelKind::speech, "tiny-en"), std::runtime_error);

    const StoredModel own = add(store_, "tiny-en", "own content");
    EXPECT_EQ(store_.find(ModelKind::speech, "tiny-en").value().folder, own.folder);
    write(own.path("a.ort"), "own con");
    EXPECT_EQ(store_.find(ModelKind::speech, "tiny-en").value().bytes(), 7u) << "the shipped one";
    EXPECT_FALSE(store_.list(ModelKind::speech).front().isRemovable);

    store_.remove(ModelKind::speech, "tiny-en");
    EXPECT_FALSE(std::filesystem::exists(own.folder));
    EXPECT_TRUE(store_.find(ModelKind::speech, "tiny-en").has_value());
    EXPECT_THROW(store_.remove(ModelKind::speech, "small-en"), std::runtime_error) << "unknown";
    EXPECT_TRUE(store_.list(ModelKind::translation).empty());
}

TEST_F(ModelStoreTest, FoldersWithoutAUsableRecordAreNoModels) {
    const StoredModel model = add(store_, "tiny-en", "content");
    const std::string sum(64, 'a');
    for (const std::string& record :
         {std::string(), std::string("["), std::string(5000, '['), std::string("null"),
          std::string(R"({"version":2,"details":{},"files":[]})"),
          std::string(R"({"version":1,"details":{},"files":[]})"),
          std::string(R"({"version":1,"details":{"a":1},"files":[]})"),
          R"({"version":1,"details":{},"files":[{"name":"../a","bytes":1,"sha256":")" + sum +
              "\"}]}",
          R"({"version":1,"details":{},"files":[{"name":"a","bytes":-1.5,"sha256":"short"}]})" +
              std::string()}) {
        write(model.folder / "model.json", record);
        EXPECT_FALSE(store_.find(ModelKind::speech, "tiny-en").has_value()) << record;
        EXPECT_TRUE(store_.list(ModelKind::speech).empty()) << record;
    }
    EXPECT_FALSE(store_.find(ModelKind::speech, "../own/speech/tiny-en").has_value());
    EXPECT_THROW(store_.remove(ModelKind::speech, ".."), std::invalid_argument);
}

TEST(ChecksumsTest, AgreeWithPublishedValues) {
    SHA256 sha;
    CRC32C crc;
    for (const char* piece : {"123", "456", "789"}) {
        sha.update(piece);
        crc.update(piece);
    }
    EXPECT_EQ(sha.hex(), "15e2b0d3c33891ebb0f1ef609ec419420c20e320ce94c65fbc8c3312448eb225");
    EXPECT_EQ(crc.value(), 0xE3069283u);
    EXPECT_EQ(CRC32C::fromBase64("4waSgw=="), 0xE3069283u);
    for (const char* wrong : {"", "4waSgw", "4waSgw=", "4wa!gw==", "4waSgwAA"})
        EXPECT_FALSE(CRC32C::fromBase64(wrong).has_value()) << wrong;
}
