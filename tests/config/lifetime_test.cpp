// A tree lives while anybody holds a node of it, and ends with the last one. The leak checker sees
// to what these tests do not name.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "config/sample_tree.hpp"
#include "support/seed.hpp"

namespace kap {
namespace {

using test::sampleFields;
using test::sampleRoot;

// Something in a tree that tells whether the tree is alive.
class Witness final : public Object {
public:
    explicit Witness(int& alive) : alive_(alive) { ++alive_; }
    ~Witness() override { --alive_; }
    [[nodiscard]] String className() const override { return u"Witness"; }
    [[nodiscard]] std::optional<std::int32_t> memberId(std::u16string_view) const override {
        return std::nullopt;
    }
    Variant invoke(std::int32_t, InvokeKind, const Arguments&) override { return {}; }

private:
    int& alive_;
};

class ConfigurationLifetime : public testing::Test {
protected:
    // A tree with a field and with a witness in the collection of applications.
    Ref<CFG_Applicazioni> witnessedRoot() {
        auto root = sampleRoot();
        root->Collezione()->Add(Variant(make<Witness>(alive_)));
        sampleFields(root)->Add(u"Copie");
        return root;
    }

    int alive_ = 0;
};

TEST_F(ConfigurationLifetime, EndsWithTheRoot) {
    auto root = witnessedRoot();
    root = {};
    EXPECT_EQ(alive_, 0);
}

TEST_F(ConfigurationLifetime, LastsAsLongAsTheDeepestNodeIsHeld) {
    auto root = witnessedRoot();
    auto field = sampleFields(root)->Item(u"Copie");
    root = {};
    EXPECT_EQ(alive_, 1);
    EXPECT_EQ(field->Path(), u"UFFICIO\\Vendite\\Ordini\\Stampa\\Copie");
    Ref<Object> node(field);
    for (int step = 0; step < 7; ++step) {
        node = node->invoke(u"Parent", InvokeKind::Get, Arguments{}).as<Ref<Object>>();
        ASSERT_TRUE(node);
    }
    EXPECT_EQ(node->className(), String(u"CFG_Applicazioni"));
    field = {};
    EXPECT_EQ(alive_, 1);
    node = {};
    EXPECT_EQ(alive_, 0);
}

TEST_F(ConfigurationLifetime, LastsAsLongAsALiveCollectionIsHeld) {
    auto root = witnessedRoot();
    auto fields = sampleFields(root)->Collezione();
    root = {};
    EXPECT_EQ(alive_, 1);
    EXPECT_EQ(fields->Count(), 1);
    fields = {};
    EXPECT_EQ(alive_, 0);
}

TEST_F(ConfigurationLifetime, LastsAsLongAsADeletedNodeIsHeld) {
    auto root = witnessedRoot();
    auto field = sampleFields(root)->Item(u"Copie");
    sampleFields(root)->Delete(u"Copie");
    root = {};
    EXPECT_EQ(alive_, 1);
    EXPECT_EQ(field->Path(), u"UFFICIO\\Vendite\\Ordini\\Stampa\\Copie");
    field = {};
    EXPECT_EQ(alive_, 0);
}

TEST_F(ConfigurationLifetime, EndsWithADeletedApplicationThatWasTheLastHeld) {
    auto root = witnessedRoot();
    auto application = root->Item(u"Vendite");
    root->Delete(u"Vendite");
    root = {};
    EXPECT_EQ(application->Path(), u"UFFICIO\\Vendite");
    application = {};
    EXPECT_EQ(alive_, 0);
}

TEST_F(ConfigurationLifetime, OfTwoRootsThatShareAnApplicationIsOne) {
    auto first = witnessedRoot();
    auto second = make<CFG_Applicazioni>();
    second->setGruppo(u"NEGOZIO");
    second->Add(Variant(first->Item(u"Vendite")));
    second = {};
    EXPECT_EQ(sampleFields(first)->Item(u"Copie")->Path(),
              u"NEGOZIO\\Vendite\\Ordini\\Stampa\\Copie");
    first = {};
    EXPECT_EQ(alive_, 0);
}

TEST_F(ConfigurationLifetime, EndsWhenParentsGoRound) {
    auto fields = make<CFG_Campi>();
    fields->setParent(Ref<Object>(fields));
    fields->Collezione()->Add(Variant(make<Witness>(alive_)));
    fields->Collezione()->Add(Variant(fields->Collezione()));
    fields = {};
    EXPECT_EQ(alive_, 0);
}

TEST_F(ConfigurationLifetime, EndsInEveryOrderOfDropping) {
    std::mt19937 random(test::randomSeed());
    for (int round = 0; round < 50; ++round) {
        std::vector<Ref<Object>> nodes;
        {
            const auto root = witnessedRoot();
            const auto application = root->Item(u"Vendite");
            const auto procedure = application->Procedure()->Item(u"Ordini");
            const auto module = procedure->Moduli()->Item(u"Stampa");
            const auto field = module->Campi()->Item(u"Copie");
            nodes = {root,      root->Collezione(),  application, application->Procedure(),
                     procedure, procedure->Moduli(), module,      module->Campi(),
                     field};
            if (round % 2 == 0) {
                nodes.emplace_back(module->Campi()->Collezione());
            } else {
                module->Campi()->Delete(u"Copie");
                application->Procedure()->Delete(u"Ordini");
            }
        }
        std::ranges::shuffle(nodes, random);
        while (nodes.size() > 1) {
            nodes.pop_back();
            ASSERT_EQ(alive_, 1);
        }
        nodes.clear();
        ASSERT_EQ(alive_, 0);
    }
}

}  // namespace
}  // namespace kap
