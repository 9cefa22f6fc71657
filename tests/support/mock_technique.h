// SPDX-License-Identifier: MIT
#ifndef TESTS_SUPPORT_MOCK_TECHNIQUE_H_
#define TESTS_SUPPORT_MOCK_TECHNIQUE_H_

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "vxclss/classifier.h"
#include "vxclss/train_params.h"

/// A technique that does nothing but write down what is asked of it.

/// What the hooks of one mock do, and the calls that they received in order. It outlives the
/// objects that refer to it.
struct MockScript {
  using Calls = std::vector<std::string>;

  /// The name under which an argument stands in `calls`; one without a name stands as "?".
  template <class T>
  void name(const T& object, const std::string& text) {
    names[&object] = text;
  }
  std::string nameOf(const void* object) const;

  /// Writes a call down and then runs what `at` holds for that hook, which may throw.
  void reach(const std::string& hook, const std::string& arguments);

  /// The calls since the last take, those of isTrained_ left out.
  Calls take();
  /// The last of them, "" if there is none.
  std::string takeLast();
  /// The first call since the last take, isTrained_ included.
  std::string first() const { return calls.empty() ? "" : calls.front(); }

  Calls calls;
  std::map<std::string, std::function<void()>> at;
  std::map<const void*, std::string> names;
  bool trainsTo = true;   // what isTrained_ says after train_, also if that throws
  bool startsTo = false;  // and after trainStart_
  bool makesNull = false;
  int classifiersAlive = 0;
};

/// Its clones bear its title and a prime, so that calls tell a clone from its original.
class MockParams : public vxClassifierTrainParams {
 public:
  explicit MockParams(MockScript& script, const std::string& title = "params", long technique = 1,
                      long value = 0);
  MockParams(const MockParams& other) = default;

  const std::string& title() const { return title_; }
  static std::string titleOf(const vxClassifierTrainParams& params);

  vxPtrHandle<vxClassifierTrainParams> clone() const override;

 protected:
  /// Compares the value alone.
  bool isEqual_(const vxClassifierTrainParams& other) const override;
  bool isSameTechnique_(const vxClassifierTrainParams& other) const override;
  vx_Classifier* newClassifier_() const override;

 private:
  MockScript* script_;
  std::string title_;
  long technique_;
  long value_;
};

class MockClassifier : public vx_Classifier {
 public:
  explicit MockClassifier(MockScript& script);
  MockClassifier(const MockClassifier& other);
  MockClassifier& operator=(const MockClassifier& other) = default;
  ~MockClassifier() override;

  /// The state that a training without parameters leaves.
  void trained(bool value) { trained_ = value; }

  using vx_Classifier::heldTrainParams_;

  vxPtrHandle<vx_Classifier> clone() const override;

 protected:
  void train_(const vxClassifierDataProvider& data, const vxClassifierTrainParams& params) override;
  void retrain_(const vxClassifierTrainParams& params) override;
  void trainStart_(const vxClassifierTrainParams& params) override;
  void trainIncremental_(const vxFeaturePattern& pattern, long label) override;
  void untrain_() override;
  bool isTrained_() const override;
  void checkRunnable_() const override;
  void run_(const vxFeaturePattern& pattern, vxClassifierResult& result) const override;

 private:
  void recordTrainInputs_(vxDiagObject* diag, unsigned long flags) const override;
  void recordTrainDetails_(vxDiagObject* diag, unsigned long flags) const override;
  void recordTrainResults_(vxDiagObject* diag, unsigned long flags) const override;
  void recordRunInputs_(vxDiagObject* diag, unsigned long flags,
                        const vxFeaturePattern& pattern) const override;
  void recordRunDetails_(vxDiagObject* diag, unsigned long flags) const override;
  void recordRunResults_(vxDiagObject* diag, unsigned long flags, const vxFeaturePattern& pattern,
                         const vxClassifierResult& result) const override;

  MockScript* script_;
  bool trained_ = false;
};

#endif  // TESTS_SUPPORT_MOCK_TECHNIQUE_H_
