#include "analyzer/AnalyzerHost.h"

#include "settings/Config.h"

AnalyzerHost::AnalyzerHost()
    : stored(analyzersAll), store([](const QList<QStringList> &analyzers) {
          analyzersClear();
          for (int i = 0; i < analyzers.size(); ++i) {
              const QStringList &values = analyzers.at(i);
              if (values.size() >= 3) {
                  analyzerPut(i, values.at(0), values.at(1), values.at(2));
              }
          }
      })
{}
