// The configuration through a connection of another maker.
#include <gtest/gtest.h>

#include <kaputil/automation/error.hpp>

#include "config/sample_tree.hpp"
#include "support/foreign_connection.hpp"
#include "support/late_bound.hpp"
#include "support/prepared_tables.hpp"
#include "support/shown.hpp"

namespace kap {
namespace {

using test::ForeignConnection;

class ForeignConfiguration : public testing::Test {
protected:
    ForeignConfiguration() {
        test::invoke(*root_, u"ActiveConnection", InvokeKind::Set, {Variant(foreign_)});
    }

    Ref<ado::Connection> inner_ = test::openConfiguration();
    Ref<ForeignConnection> foreign_ = make<ForeignConnection>(inner_);
    Ref<CFG_Applicazioni> root_ = test::sampleRoot();
};

TEST_F(ForeignConfiguration, GivesBackTheObjectThatWasSet) {
    const auto held = [&] {
        return test::invoke(*root_, u"ActiveConnection", InvokeKind::Get).as<Ref<Object>>();
    };
    EXPECT_EQ(Ref<Object>(foreign_), held());
    test::invoke(*root_, u"ActiveConnection", InvokeKind::Set, {Variant(inner_)});
    EXPECT_EQ(Ref<Object>(inner_), held());
    test::invoke(*root_, u"ActiveConnection", InvokeKind::Set, {Variant(Ref<Object>())});
    EXPECT_FALSE(held());
}

TEST_F(ForeignConfiguration, TakesAConnectionThatIsNotOpenYet) {
    const auto later = make<ForeignConnection>(make<ado::Connection>());
    test::invoke(*root_, u"ActiveConnection", InvokeKind::Set, {Variant(later)});
    EXPECT_TRUE(later->sent().empty());
    EXPECT_TRUE(later->openings().empty());
}

TEST_F(ForeignConfiguration, IsLoadedWrittenAndReset) {
    KAP_NEEDS_DIALECT(inner_, "what is written through other makers' connections is that");
    const auto copies = test::sampleFields(root_)->Add(u"Copie");
    test::addRow(inner_, "UFFICIO", "Copie", "2");
    root_->CaricaCfgPersonalizzati();
    EXPECT_EQ("String 2", test::shown(copies->Valore()));
    copies->setValore(u"L'ultima");
    copies->Update();
    EXPECT_EQ("UFFICIO Vendite Ordini Stampa Copie=L'ultima/0\n", test::rowsOf(inner_));
    copies->ResetDefault(/*resetTabella=*/true);
    EXPECT_EQ("", test::rowsOf(inner_));
    EXPECT_TRUE(foreign_->openings().empty());
}

}  // namespace
}  // namespace kap
