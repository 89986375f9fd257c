// A Qt list that follows what is typed.
// Usage: search API_URL RESOURCES_URL [TEXT], as `orvo serve-demo` prints them; types the text, if
// there is one, prints the rows for it, and ends.
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QVBoxLayout>
#include <QWidget>
#include <cstdio>

#include "SearchModel.h"

namespace {

class SearchScreen final : public QWidget {
 public:
  explicit SearchScreen(const std::shared_ptr<const orvo::Context>& context)
      : field(new QLineEdit), model(new SearchModel(context, this)), problem(new QLabel) {
    auto* const list = new QListView;
    list->setModel(model);
    auto* const layout = new QVBoxLayout(this);
    for (QWidget* const part : {static_cast<QWidget*>(field), static_cast<QWidget*>(list),
                                static_cast<QWidget*>(problem)}) {
      layout->addWidget(part);
    }
    connect(field, &QLineEdit::textEdited, model, &SearchModel::setText);
    model->shown = [this](const QString& why) { problem->setText(why); };
  }

  QLineEdit* const field;
  SearchModel* const model;
  QLabel* const problem;
};

void type(SearchScreen& screen, const QString& text) {
  screen.model->shown = [&screen](const QString& why) {
    for (int row = 0; row < screen.model->rowCount(); ++row) {
      std::puts(qPrintable(screen.model->index(row).data().toString()));
    }
    QCoreApplication::exit(why.isEmpty() ? 0 : 1);
  };
  for (int length = 1; length <= text.size(); ++length) screen.model->setText(text.left(length));
  screen.model->setText(text.chopped(1));  // its last letter goes, and comes again
  screen.model->setText(text);
}

}  // namespace

int main(int count, char** arguments) {
  QApplication app(count, arguments);
  const auto api = orvo::URL::parse(count >= 3 ? arguments[1] : "");
  const auto resources = orvo::URL::parse(count >= 3 ? arguments[2] : "");
  if (!api || !resources) return std::fputs("usage: search API_URL RESOURCES_URL\n", stderr), 2;
  const orvo::QtMainQueue mainQueue;
  std::optional<SearchScreen> screen;
  orvo::onMain(&app, orvo::ContextService::context(*api, *resources, orvo::Client::appleTV),
               [&](const auto& context) {
                 if (context.failed()) {
                   std::fprintf(stderr, "%s\n", context.error()->description().c_str());
                   return QCoreApplication::exit(1);
                 }
                 screen.emplace(*context.value());
                 screen->show();
                 if (count > 3) type(*screen, arguments[3]);
               });
  return QApplication::exec();
}
