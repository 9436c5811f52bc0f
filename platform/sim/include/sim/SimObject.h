#ifndef SIM_SIMOBJECT_H
#define SIM_SIMOBJECT_H

#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "sim/Json.h"

namespace sim {

class SimSet;

template <typename T>
struct FromJson;

// One operation of a simulated object: what it returns and what it fills in, in argument order.
struct OpSpec {
    std::string name;
    Kind result;
    std::vector<Kind> outputs;
};

// One piece of a simulated object's state, readable and settable by scripts and tests.
struct StateSpec {
    std::string key;
    Kind kind;
    json initial;
};

// A scripted answer: the result to return (null: the object's own) and the values to fill in
// (missing or null entries: the object's own).
struct Answer {
    json result;
    json outputs = json::array();
    // Not empty: the call throws std::runtime_error with this text instead, and is not journalled;
    // for checking that the service survives a platform object that throws.
    std::string raise;
};

// What every simulated object shares: a name, presence, state, scripted answers and the journal.
// Each operation of a simulated object runs inside a Call, which holds the set's lock, applies the
// scripted answer and journals the call when it completes.
class SimObject {
  public:
    SimObject(SimSet& set, const std::string& name, std::vector<OpSpec> operations,
              std::vector<StateSpec> state, bool canBeAbsent = true);
    virtual ~SimObject();

    SimObject(const SimObject&) = delete;
    SimObject& operator=(const SimObject&) = delete;

    const std::string& simName() const { return m_name; }
    bool canBeAbsent() const { return m_canBeAbsent; }
    bool isPresent() const;
    void setPresent(bool present);

    const std::vector<OpSpec>& operations() const { return m_operations; }
    const std::vector<StateSpec>& stateSpecs() const { return m_stateSpecs; }
    const OpSpec* findOperation(const std::string& name) const;

    bool setAnswer(const std::string& operation, const json& result, const json& outputs,
                   std::string& error);
    bool clearAnswer(const std::string& operation, std::string& error);
    // Every later call of `operation` throws std::runtime_error(`what`) until the answer is
    // cleared or set anew.
    bool setThrow(const std::string& operation, const std::string& what, std::string& error);
    bool setState(const std::string& key, const json& value, std::string& error);
    json getState(const std::string& key) const;
    // Back to the initial state, without answers; presence is kept.
    virtual void reset();

  protected:
    class Call {
      public:
        Call(SimObject& object, const char* operation, json args = json::array());
        ~Call();

        Call(const Call&) = delete;
        Call& operator=(const Call&) = delete;

        // The next value this operation fills in: the scripted one if there is one, else `own`.
        template <typename T>
        T output(const T& own);
        // Completes the call with the scripted result if there is one, else `own`.
        template <typename T>
        T result(const T& own);
        // Completes a call that returns nothing, or returns a value no script may change.
        void done(json result = json());

        bool hasScriptedOutput() const;
        bool hasScriptedResult() const;

      private:
        const json* scriptedOutput() const;
        void finish(json result);

        SimObject& m_object;
        std::unique_lock<std::recursive_mutex> m_lock;
        std::string m_operation;
        json m_args;
        json m_outputs = json::array();
        Answer m_answer;
        bool m_answered = false;
        bool m_finished = false;
    };

    // Called with the set's lock held (inside a Call).
    json& state(const std::string& key);
    template <typename T>
    T stateAs(const std::string& key) {
        return FromJson<T>::get(state(key));
    }
    SimSet& simSet() { return m_set; }

  private:
    friend class Call;

    // False, with the reason in `error`, when the object has no such operation.
    bool knowsOperation(const std::string& operation, std::string& error) const;

    SimSet& m_set;
    std::string m_name;
    std::vector<OpSpec> m_operations;
    std::vector<StateSpec> m_stateSpecs;
    bool m_canBeAbsent;
    bool m_present = true;
    json m_state;
    std::map<std::string, Answer> m_answers;
};

// Converting a JSON value to the C++ type an operation returns or fills in. Values were checked
// against the operation's kind when they were set.
template <>
struct FromJson<int> {
    static int get(const json& v) { return toInt(v); }
};
template <>
struct FromJson<unsigned int> {
    static unsigned int get(const json& v) { return toUInt(v); }
};
template <>
struct FromJson<uint8_t> {
    static uint8_t get(const json& v) { return static_cast<uint8_t>(toInt(v)); }
};
template <>
struct FromJson<bool> {
    static bool get(const json& v) { return toBool(v); }
};
template <>
struct FromJson<std::string> {
    static std::string get(const json& v) { return toText(v); }
};
template <>
struct FromJson<std::vector<uint8_t>> {
    static std::vector<uint8_t> get(const json& v) { return toBytes(v); }
};
template <>
struct FromJson<std::vector<int32_t>> {
    static std::vector<int32_t> get(const json& v) { return toIntList(v); }
};
template <typename T>
struct FromJson {
    static T get(const json& v) { return v.get<T>(); }
};

// And back, for the journal.
inline json toJson(const std::string& text) {
    return textOrHex(text);
}
inline json toJson(const std::vector<uint8_t>& bytes) {
    return bytesToJson(bytes.data(), bytes.size());
}
inline json toJson(uint8_t value) {
    return json(static_cast<unsigned int>(value));
}
template <typename T>
json toJson(const T& value) {
    return json(value);
}

template <typename T>
T SimObject::Call::output(const T& own) {
    const json* scripted = scriptedOutput();
    T value = scripted != nullptr ? FromJson<T>::get(*scripted) : own;
    m_outputs.push_back(toJson(value));
    return value;
}

template <typename T>
T SimObject::Call::result(const T& own) {
    T value = hasScriptedResult() ? FromJson<T>::get(m_answer.result) : own;
    finish(toJson(value));
    return value;
}

}  // namespace sim

#endif
