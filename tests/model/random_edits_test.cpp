// Random sequences of edits against a dense table that applies each edit in the plainest way.
#include <algorithm>
#include <map>
#include <random>

#include "model_fixture.hpp"

namespace zorvex::test {
namespace {

struct Column {
  double obj, lb, ub;
  char type;
  std::string name;
  bool gone = false;
};
struct Row {
  char sense;
  double rhs;
  std::string name;
  std::map<int, double> coefficient;  // by column, stored columns first, then those added since the update
  bool gone = false;
};
struct Set {
  int type;
  std::vector<std::pair<int, double>> member;
  bool gone = false;
};
struct Term {
  int first, second;
  double value;
};

// `seen` is the model as of the last update, `next` as the edits since would have it, before anything is removed.
struct Reference {
  std::vector<Column> cols;
  std::vector<Row> rows;
  std::vector<Set> sets;
  std::vector<Term> terms;

  void remove_gone() {
    std::vector<int> number(cols.size(), -1);
    std::vector<Column> kept_cols;
    for (std::size_t j = 0; j < cols.size(); ++j) {
      if (cols[j].gone) continue;
      number[j] = static_cast<int>(kept_cols.size());
      kept_cols.push_back(cols[j]);
    }
    cols = kept_cols;
    std::erase_if(rows, [](const Row& row) { return row.gone; });
    std::erase_if(sets, [](const Set& set) { return set.gone; });
    for (Row& row : rows) {
      std::map<int, double> moved;
      for (const auto& [col, value] : row.coefficient) {
        if (number[col] >= 0 && value != 0) moved[number[col]] = value;
      }
      row.coefficient = moved;
    }
    for (Set& set : sets) {
      std::erase_if(set.member, [&](const auto& member) { return number[member.first] < 0; });
      for (auto& member : set.member) member.first = number[member.first];
    }
    std::erase_if(terms, [&](const Term& term) { return number[term.first] < 0 || number[term.second] < 0; });
    for (Term& term : terms) term = {number[term.first], number[term.second], term.value};
  }
};

class RandomEdits : public ModelTest, public ::testing::WithParamInterface<int> {
 protected:
  int below(int n) { return std::uniform_int_distribution<int>(0, n - 1)(random_); }
  double number() { return below(19) - 9; }
  std::string name() { return below(3) == 0 ? "" : "n" + std::to_string(below(1000)); }
  const char* text(const std::string& value) { return value.empty() ? nullptr : value.c_str(); }

  // Distinct indices below n, in random order.
  std::vector<int> choose(int n) {
    std::vector<int> all(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i) all[i] = i;
    std::shuffle(all.begin(), all.end(), random_);
    all.resize(static_cast<std::size_t>(n == 0 ? 0 : below(std::min(n, 6) + 1)));
    return all;
  }
  std::vector<double> numbers(std::size_t n) {
    std::vector<double> values(n);
    for (double& value : values) value = number();
    return values;
  }
  [[nodiscard]] int next_cols() const { return static_cast<int>(next_.cols.size()); }
  [[nodiscard]] int next_rows() const { return static_cast<int>(next_.rows.size()); }
  [[nodiscard]] int seen_cols() const { return static_cast<int>(seen_.cols.size()); }
  [[nodiscard]] int seen_rows() const { return static_cast<int>(seen_.rows.size()); }

  void add_column() {
    const auto index = choose(next_rows());
    const auto value = numbers(index.size());
    Column column{number(), number(), number(), "CBISN"[below(5)], name()};
    ASSERT_EQ(ZLPaddvar(model_, static_cast<int>(index.size()), index.data(), value.data(), column.obj, column.lb,
                        column.ub, column.type, text(column.name)),
              0);
    for (std::size_t k = 0; k < index.size(); ++k) next_.rows[index[k]].coefficient[next_cols()] = value[k];
    next_.cols.push_back(column);
  }
  void add_rows() {
    std::vector<int> begin, index;
    std::vector<double> value, rhs;
    std::string sense;
    std::vector<Row> rows(static_cast<std::size_t>(below(4)));
    for (Row& row : rows) {
      row = {"<>="[below(3)], number(), "", {}};
      begin.push_back(static_cast<int>(index.size()));
      for (const int col : choose(next_cols())) {
        index.push_back(col);
        value.push_back(row.coefficient[col] = number());
      }
      sense += row.sense;
      rhs.push_back(row.rhs);
    }
    ASSERT_EQ(ZLPaddconstrs(model_, static_cast<int>(rows.size()), static_cast<int>(index.size()), begin.data(),
                            index.data(), value.data(), sense.data(), rhs.data(), nullptr),
              0);
    next_.rows.insert(next_.rows.end(), rows.begin(), rows.end());
  }
  void change_coefficients() {
    if (next_rows() == 0 || next_cols() == 0) return;
    std::vector<int> rows, cols;
    std::vector<double> values;
    for (int k = below(8); k > 0; --k) {
      rows.push_back(below(next_rows()));
      cols.push_back(below(next_cols()));
      values.push_back(below(3) == 0 ? 0 : number());
      next_.rows[rows.back()].coefficient[cols.back()] = values.back();
    }
    ASSERT_EQ(ZLPchgcoeffs(model_, static_cast<int>(rows.size()), rows.data(), cols.data(), values.data()), 0);
  }
  void delete_some() {
    const auto cols = choose(below(3) == 0 ? seen_cols() : 0);
    const auto rows = choose(below(3) == 0 ? seen_rows() : 0);
    const auto sets = choose(below(3) == 0 ? static_cast<int>(seen_.sets.size()) : 0);
    ASSERT_EQ(ZLPdelvars(model_, static_cast<int>(cols.size()), cols.data()), 0);
    ASSERT_EQ(ZLPdelconstrs(model_, static_cast<int>(rows.size()), rows.data()), 0);
    ASSERT_EQ(ZLPdelsos(model_, static_cast<int>(sets.size()), sets.data()), 0);
    for (const int col : cols) next_.cols[col].gone = true;
    for (const int row : rows) next_.rows[row].gone = true;
    for (const int set : sets) next_.sets[set].gone = true;
  }
  void add_set_and_terms() {
    const auto members = choose(next_cols());
    const auto weights = numbers(members.size());
    const int type = 1 + below(2), begin = 0;
    ASSERT_EQ(ZLPaddsos(model_, 1, static_cast<int>(members.size()), &type, &begin, members.data(), weights.data()), 0);
    next_.sets.push_back({type, {}});
    for (std::size_t k = 0; k < members.size(); ++k) next_.sets.back().member.emplace_back(members[k], weights[k]);
    if (below(5) == 0) {
      ASSERT_EQ(ZLPdelq(model_), 0);
      next_.terms.clear();
    }
    if (next_cols() == 0) return;
    const int first = below(next_cols()), second = below(next_cols());
    const double value = number();
    ASSERT_EQ(ZLPaddqpterms(model_, 1, &first, &second, &value), 0);
    if (value != 0) next_.terms.push_back({first, second, value});
  }
  void set_attributes() {
    const auto cols = choose(seen_cols());
    const auto values = numbers(cols.size());
    ASSERT_EQ(ZLPsetdblattrlist(model_, "UB", static_cast<int>(cols.size()), cols.data(), values.data()), 0);
    for (std::size_t k = 0; k < cols.size(); ++k) next_.cols[cols[k]].ub = values[k];
    for (int k = below(3); k > 0 && seen_rows() > 0; --k) {
      const int row = below(seen_rows());
      Row& target = next_.rows[row];
      target.rhs = number();
      target.sense = "<>="[below(3)];
      target.name = name();
      ASSERT_EQ(ZLPsetdblattrelement(model_, "RHS", row, target.rhs), 0);
      ASSERT_EQ(ZLPsetcharattrelement(model_, "Sense", row, target.sense), 0);
      ASSERT_EQ(ZLPsetstrattrelement(model_, "ConstrName", row, target.name.c_str()), 0);
    }
  }

  // --- comparison with the model as of its last update ---
  void compare_values() {
    ASSERT_EQ(get_int("NumVars"), seen_cols());
    ASSERT_EQ(get_int("NumConstrs"), seen_rows());
    for (int j = 0; j < seen_cols(); ++j) {
      EXPECT_EQ(get_dbl("Obj", j), seen_.cols[j].obj);
      EXPECT_EQ(get_dbl("LB", j), seen_.cols[j].lb);
      EXPECT_EQ(get_dbl("UB", j), seen_.cols[j].ub);
      EXPECT_EQ(get_char("VType", j), seen_.cols[j].type);
      if (!seen_.cols[j].name.empty()) {
        EXPECT_EQ(get_str("VarName", j), seen_.cols[j].name);
      }
    }
    for (int i = 0; i < seen_rows(); ++i) {
      EXPECT_EQ(get_char("Sense", i), seen_.rows[i].sense);
      EXPECT_EQ(get_dbl("RHS", i), seen_.rows[i].rhs);
      EXPECT_EQ(get_str("ConstrName", i).substr(0, 1), seen_.rows[i].name.empty() ? "R" : "n");
    }
  }
  void compare_matrix() {
    std::map<std::pair<int, int>, double> expected, by_col, by_row;
    for (int i = 0; i < seen_rows(); ++i) {
      for (const auto& [col, value] : seen_.rows[i].coefficient) expected[{i, col}] = value;
    }
    const auto read = [&](auto query, int number, bool rows, auto& target) {
      if (number == 0) return;
      int count = 0;
      ASSERT_EQ(query(model_, &count, nullptr, nullptr, nullptr, 0, number), 0);
      std::vector<int> begin(static_cast<std::size_t>(number)), index(static_cast<std::size_t>(count) + 1);
      std::vector<double> value(static_cast<std::size_t>(count) + 1);
      ASSERT_EQ(query(model_, &count, begin.data(), index.data(), value.data(), 0, number), 0);
      begin.push_back(count);
      for (int k = 0; k < number; ++k) {
        for (int entry = begin[k]; entry < begin[k + 1]; ++entry) {
          const auto at = rows ? std::pair(k, index[entry]) : std::pair(index[entry], k);
          EXPECT_TRUE(target.emplace(at, value[entry]).second) << "entry twice";
        }
      }
    };
    read(ZLPgetvars, seen_cols(), false, by_col);
    read(ZLPgetconstrs, seen_rows(), true, by_row);
    EXPECT_EQ(by_col, expected);
    EXPECT_EQ(by_row, expected);
    EXPECT_EQ(get_int("NumNZs"), static_cast<int>(expected.size()));
  }
  void compare_sets_and_terms() {
    ASSERT_EQ(get_int("NumSOS"), static_cast<int>(seen_.sets.size()));
    for (int k = 0; k < static_cast<int>(seen_.sets.size()); ++k) {
      int count = 0, type = 0, begin = 0, index[8];
      double weight[8];
      ASSERT_EQ(ZLPgetsos(model_, &count, &type, &begin, index, weight, k, 1), 0);
      ASSERT_EQ(count, static_cast<int>(seen_.sets[k].member.size()));
      EXPECT_EQ(type, seen_.sets[k].type);
      for (int m = 0; m < count; ++m) EXPECT_EQ(std::pair(index[m], weight[m]), seen_.sets[k].member[m]);
    }
    int count = 0;
    ASSERT_EQ(ZLPgetq(model_, &count, nullptr, nullptr, nullptr), 0);
    ASSERT_EQ(count, static_cast<int>(seen_.terms.size()));
    std::vector<int> first(static_cast<std::size_t>(count) + 1), second(first);
    std::vector<double> value(first.size());
    ASSERT_EQ(ZLPgetq(model_, &count, first.data(), second.data(), value.data()), 0);
    for (int k = 0; k < count; ++k) {
      EXPECT_EQ(first[k], seen_.terms[k].first);
      EXPECT_EQ(second[k], seen_.terms[k].second);
      EXPECT_EQ(value[k], seen_.terms[k].value);
    }
  }

  std::mt19937 random_;
  Reference seen_, next_;
};

TEST_P(RandomEdits, AgreeWithADenseTable) {
  random_.seed(static_cast<unsigned>(GetParam()));
  make_model(0, 0);
  for (int step = 0; step < 400 && !HasFailure(); ++step) {
    switch (below(9)) {
      case 0:
      case 1:
        add_column();
        break;
      case 2:
        add_rows();
        break;
      case 3:
        change_coefficients();
        break;
      case 4:
        delete_some();
        break;
      case 5:
        add_set_and_terms();
        break;
      case 6:
        set_attributes();
        break;
      case 7:
        compare_matrix();
        compare_values();
        compare_sets_and_terms();
        break;
      default:
        update();
        next_.remove_gone();
        seen_ = next_;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomEdits, ::testing::Range(1, 26));

class ManyEdits : public ModelTest {};

// A quadratic step anywhere in the queue or the update makes this last hours.
TEST_F(ManyEdits, AMillionNonzerosOneRowAtATime) {
  constexpr int kRows = 100000, kCols = 50000, kPerRow = 10;
  make_model(0, kCols);
  std::mt19937 random(7);
  double sum = 0;
  std::vector<int> index(kPerRow);
  std::vector<double> value(kPerRow);
  for (int row = 0; row < kRows; ++row) {
    const int first = static_cast<int>(random() % (kCols / kPerRow));
    for (int k = 0; k < kPerRow; ++k) {
      index[k] = first + k * (kCols / kPerRow);
      sum += value[k] = 1 + static_cast<int>(random() % 9);
    }
    ASSERT_EQ(ZLPaddconstr(model_, kPerRow, index.data(), value.data(), row % 2 == 0 ? '<' : '>', 1, nullptr), 0);
  }
  update();
  ASSERT_EQ(get_int("NumNZs"), kRows * kPerRow);
  int count = 0;
  std::vector<int> begin(kCols), rows(static_cast<std::size_t>(kRows) * kPerRow);
  std::vector<double> values(rows.size());
  ASSERT_EQ(ZLPgetvars(model_, &count, begin.data(), rows.data(), values.data(), 0, kCols), 0);
  for (const double v : values) sum -= v;
  EXPECT_EQ(sum, 0);
  for (int row = 0; row < kRows; row += 2) ASSERT_EQ(ZLPdelconstrs(model_, 1, &row), 0);
  for (int row = 1; row < kRows; row += 2) {
    const int col = row % kCols;
    const double two = 2;
    ASSERT_EQ(ZLPchgcoeffs(model_, 1, &row, &col, &two), 0);
  }
  update();
  EXPECT_EQ(get_int("NumConstrs"), kRows / 2);
  EXPECT_EQ(coefficient(0, 1), 2);
}

}  // namespace
}  // namespace zorvex::test
