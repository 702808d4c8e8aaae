#pragma once

#include <QObject>

namespace larkspur {

class OperationCenter;
class OperationRun;
class UserDataManager;

/// Writes into the history what operations have done to packages. Those know nothing of it.
class OperationJournal : public QObject {
    Q_OBJECT
  public:
    OperationJournal(OperationCenter &operations, UserDataManager &userData);

  private:
    void note(const OperationRun &run);

    UserDataManager &m_userData;
};

} // namespace larkspur
