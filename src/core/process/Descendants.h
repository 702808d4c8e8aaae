#pragma once

namespace larkspur {

/// Tells whether anything is left of what a child has started, in its group or in a session of its own. They
/// all inherit the end of a pipe; what closes it, as a daemon does, does not count.
class Descendants {
  public:
    Descendants() = default;
    ~Descendants();
    Descendants(const Descendants &) = delete;
    Descendants &operator=(const Descendants &) = delete;

    /// Before the child is started. Where the system gives no pipe nobody is ever left.
    void prepare();
    /// Between fork and exec.
    void enterInChild() const;
    /// The child has been started, or never will be.
    void childStarted();

    bool areLeft() const;
    /// What they have open, for `ProcessTable::holdersOf`; -1 without a pipe.
    int descriptor() const { return m_ours; }

  private:
    int m_ours = -1;
    int m_theirs = -1;
};

} // namespace larkspur
