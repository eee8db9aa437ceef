// Recordsets against a plain list of numbers that is treated alike: added to, deleted from,
// changed, filtered and sorted at random.
#include <algorithm>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include <kaputil/ado/recordset.hpp>
#include <kaputil/automation/plain_text.hpp>

#include "support/database.hpp"
#include "support/seed.hpp"

namespace kap::ado {
namespace {

constexpr int kSteps = 800;

struct Row {
    int id;
    int value;
    bool deleted = false;
};

// What a recordset has to show.
class Model {
public:
    void add(int id, int value) {
        order_.push_back(rows_.size());
        rows_.push_back({id, value});
    }
    void arrange(int atLeast, int direction) {
        atLeast_ = atLeast;
        order_.clear();
        for (std::size_t i = 0; i < rows_.size(); ++i) {
            order_.push_back(i);
        }
        std::ranges::stable_sort(order_, [&](std::size_t left, std::size_t right) {
            return (rows_[left].value - rows_[right].value) * direction < 0;
        });
    }
    [[nodiscard]] std::vector<Row*> shown() {
        std::vector<Row*> rows;
        for (const std::size_t i : order_) {
            if (!rows_[i].deleted && rows_[i].value >= atLeast_) {
                rows.push_back(&rows_[i]);
            }
        }
        return rows;
    }

private:
    std::vector<Row> rows_;
    std::vector<std::size_t> order_;
    int atLeast_ = 0;
};

class ModelTest : public ::testing::TestWithParam<LockTypeEnum> {
protected:
    ModelTest() : random_(test::randomSeed()), rows_(make<Recordset>()) {
        rows_->Fields()->Append(u"Id", DataTypeEnum::adInteger);
        rows_->Fields()->Append(u"Valore", DataTypeEnum::adInteger);
        rows_->setLockType(GetParam());
        rows_->Open();
    }

    [[nodiscard]] int below(int limit) {
        return std::uniform_int_distribution<int>(0, limit - 1)(random_);
    }

    void step(int number) {
        const std::vector<Row*> shown = model_.shown();
        switch (below(8)) {
            case 0:
            case 1:
            case 2: {
                const int value = below(50);
                rows_->AddNew();
                rows_->Fields()->Item(u"Id")->setValue(number);
                rows_->Update(u"Valore", value);
                model_.add(number, value);
                break;
            }
            case 3:
                if (Row* row = goToAny(shown)) {
                    rows_->Delete();
                    row->deleted = true;
                }
                break;
            case 4:
            case 5:
                if (Row* row = goToAny(shown)) {
                    row->value = below(50);
                    rows_->Update(u"Valore", row->value);
                }
                break;
            case 6:
                arrange(below(2) * below(50), direction_);
                break;
            default:
                arrange(atLeast_, below(3) - 1);
                break;
        }
    }

    // Stands on one of the records, in the recordset and in the model.
    [[nodiscard]] Row* goToAny(const std::vector<Row*>& shown) {
        if (shown.empty()) {
            return nullptr;
        }
        const int place = below(static_cast<int>(shown.size()));
        rows_->setAbsolutePosition(place + 1);
        return shown[static_cast<std::size_t>(place)];
    }

    void arrange(int atLeast, int direction) {
        atLeast_ = atLeast;
        direction_ = direction;
        rows_->setFilter(atLeast == 0 ? String() : "Valore >= " + plain::text(atLeast));
        rows_->setSort(direction == 0 ? u"" : direction < 0 ? u"Valore DESC" : u"Valore");
        model_.arrange(atLeast, direction);
    }

    void compare() {
        const std::vector<Row*> shown = model_.shown();
        ASSERT_EQ(rows_->RecordCount(), static_cast<int>(shown.size()));
        if (shown.empty()) {
            return;
        }
        rows_->MoveFirst();
        for (std::size_t i = 0; i < shown.size(); ++i, rows_->MoveNext()) {
            ASSERT_FALSE(rows_->Eof());
            ASSERT_EQ(test::fieldOf(rows_, 0).as<std::int32_t>(), shown[i]->id);
            ASSERT_EQ(test::fieldOf(rows_, 1).as<std::int32_t>(), shown[i]->value);
            ASSERT_EQ(rows_->AbsolutePosition(), static_cast<int>(i) + 1);
        }
        ASSERT_TRUE(rows_->Eof());
        rows_->MovePrevious();
        ASSERT_EQ(test::fieldOf(rows_, 0).as<std::int32_t>(), shown.back()->id);
    }

    std::mt19937 random_;
    Ref<Recordset> rows_;
    Model model_;
    int atLeast_ = 0;
    int direction_ = 0;
};

TEST_P(ModelTest, ShowsWhatAPlainListWould) {
    for (int number = 0; number < kSteps; ++number) {
        step(number);
        if (number % 16 == 0) {
            compare();
            ASSERT_FALSE(HasFatalFailure()) << "after step " << number;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Locks, ModelTest,
                         ::testing::Values(LockTypeEnum::adLockOptimistic,
                                           LockTypeEnum::adLockBatchOptimistic));

}  // namespace
}  // namespace kap::ado
