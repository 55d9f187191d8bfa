#include "app/mdiMenu.h"

#include <QApplication>
#include <QCloseEvent>
#include <QLocale>
#include <QMdiSubWindow>
#include <QMenuBar>
#include <QShortcut>
#include <QStatusBar>
#include <QToolBar>

#include "app/access_keys.h"
#include "app/child_forms.h"
#include "app/form_look.h"
#include "app/menu_commands.h"
#include "app/window_place.h"
#include "errors/error_reporter.h"
#include "session/program_errors.h"

namespace tandeko {

namespace {

QString longDate(const QDate& date) {
  const QLocale locale;
  return locale.toString(date, QStringLiteral("dddd")) + QStringLiteral(", ") +
         locale.toString(date, QStringLiteral("d MMMM yyyy"));
}

bool mayChange(const Session& session) {
  return session.UserCanWrite() && session.databaseOpen() && !session.database().readOnly();
}

}  // namespace

mdiMenu::mdiMenu(Session& session) : session_(session), look_(session.settings().program()) {
  setObjectName(QStringLiteral("mdiMenu"));
  setWindowTitle(session.title());
  children_ = new ChildWindows(this);
  setCentralWidget(children_);
  buildMenus();
  new AccessKeys(*menuBar(), *children_);
  buildToolBar();
  buildStatusBar();
  desk_ = new DatabaseDesk(session, *cmbBaza_, *cmbEwiRejestr_, this);
  handlers_ = menuHandlers(session, *this);
  connectCommands();
  session.setFrame(this);
  session.windows().announce(session.title(), [this] {
    showMaximized();
    raise();
    activateWindow();
  });
  placeAtStart();
  updateCommands();
}

// The forms go last; what they tell while they go is no longer this window's business.
mdiMenu::~mdiMenu() {
  children_->disconnect(this);
  session_.disconnect(this);
  session_.setFrame(nullptr);
}

void mdiMenu::buildMenus() {
  buildMenuBar(*menuBar(), mainMenu());
  for (const auto menu : {ContextMenu::RegisterList, ContextMenu::PanelEmployees, ContextMenu::PanelItems,
                          ContextMenu::DocumentLinks}) {
    auto* popup = new QMenu(this);
    buildMenu(*popup, contextMenu(menu));
    contextMenus_[menu] = popup;
  }
  for (QAction* action : findChildren<QAction*>())
    if (lineOf(action)) actions_ << action;
  connect(findChild<QMenu*>(QStringLiteral("mnuEdycja")), &QMenu::aboutToShow, this,
          &mdiMenu::updateEditMenu);
  connect(findChild<QMenu*>(QStringLiteral("mnuOkno")), &QMenu::aboutToShow, this, &mdiMenu::fillWindowList);
}

void mdiMenu::buildToolBar() {
  auto* bar = addToolBar(QStringLiteral("Pasek narzędzi"));
  bar->setObjectName(QStringLiteral("toolMenu"));
  bar->setMovable(false);
  bar->setContextMenuPolicy(Qt::PreventContextMenu);
  const int side = style()->pixelMetric(QStyle::PM_SmallIconSize) * 3 / 2;
  bar->setIconSize(QSize(side, side));
  const auto button = [&](const QString& tip, const QString& icon, const QString& menuName) {
    auto* entry = findChild<QAction*>(menuName);
    QIcon picture;
    for (const int size : {16, 24, 32, 48})
      picture.addFile(QStringLiteral(":/icons/%1-%2.png").arg(icon).arg(size));
    QAction* tool = bar->addAction(picture, tip, entry, &QAction::trigger);
    tool->setToolTip(tip);
    tools_ << qMakePair(tool, entry);
  };
  button(QStringLiteral("Panel operacyjny"), QStringLiteral("panel"), QStringLiteral("mnuKarTandeko"));
  button(QStringLiteral("Pracownicy"), QStringLiteral("people"), QStringLiteral("mnuSloPracownicy"));
  button(QStringLiteral("Kartoteka przedmiotów"), QStringLiteral("items"),
         QStringLiteral("mnuKarPrzedmioty"));
  bar->addSeparator();
  button(QStringLiteral("Drukuj..."), QStringLiteral("print"), QStringLiteral("mnuBazaDrukuj"));
  button(QStringLiteral("Filtr..."), QStringLiteral("filter"), QStringLiteral("mnuKarFiltr"));
  button(QStringLiteral("Sumuj"), QStringLiteral("sum"), QStringLiteral("mnuKarSumuj"));
  bar->addSeparator();
  const auto combo = [&](const QString& caption, const QString& comboName, const char* keys) {
    auto* box = new QComboBox(bar);
    box->setObjectName(comboName);
    box->setMinimumContentsLength(4);
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    box->setMaximumWidth(fontMetrics().averageCharWidth() * 60);
    auto* label = new QLabel(caption, bar);
    label->setBuddy(box);
    label->setContentsMargins(fontMetrics().averageCharWidth(), 0, fontMetrics().averageCharWidth() / 2, 0);
    bar->addWidget(label);
    bar->addWidget(box);
    const QKeySequence shortcut(QLatin1String{keys});
    auto* open = new QShortcut(shortcut, this);
    connect(open, &QShortcut::activated, box, [box] {
      if (!box->isEnabled() || box->count() == 0) return;
      box->setFocus();
      box->showPopup();
    });
    box->setToolTip(
        QStringLiteral("%1 (%2)").arg(caption.chopped(1), shortcut.toString(QKeySequence::NativeText)));
    return box;
  };
  cmbBaza_ = combo(QStringLiteral("Baza:"), QStringLiteral("cmbBaza"), "Ctrl+Shift+B");
  cmbEwiRejestr_ = combo(QStringLiteral("Rejestr:"), QStringLiteral("cmbEwiRejestr"), "Ctrl+Shift+R");
}

void mdiMenu::buildStatusBar() {
  statusBar()->setObjectName(QStringLiteral("StatusMenu"));
  statusText_ = new QLabel(this);
  statusText_->setObjectName(QStringLiteral("statusText"));
  statusUser_ = new QLabel(this);
  statusUser_->setObjectName(QStringLiteral("statusUser"));
  statusDate_ = new QLabel(longDate(session_.clock().today()), this);
  statusDate_->setObjectName(QStringLiteral("statusDate"));
  const int gap = fontMetrics().averageCharWidth();
  for (QLabel* label : {statusText_, statusUser_, statusDate_}) label->setContentsMargins(gap, 0, gap, 0);
  statusBar()->addWidget(statusText_, 1);
  statusBar()->addPermanentWidget(statusUser_);
  statusBar()->addPermanentWidget(statusDate_);
}

void mdiMenu::connectCommands() {
  for (QAction* action : std::as_const(actions_))
    connect(action, &QAction::triggered, this,
            [this, action] { runAction(action->objectName(), *lineOf(action)); });
  connect(children_, &QMdiArea::subWindowActivated, this, &mdiMenu::activeFormChanged);
  connect(&session_, &Session::registerChanged, this, &mdiMenu::refreshLists);
  connect(&autoRefresh_, &AutoRefresh::due, this, &mdiMenu::refreshLists);
  connect(desk_, &DatabaseDesk::opened, this, &mdiMenu::databaseOpened);
  connect(&session_.settings(), &Settings::changed, this, &mdiMenu::settingsChanged);
}

void mdiMenu::settingsChanged() {
  const ProgramSettings& now = session_.settings().program();
  autoRefresh_.setMinutes(now.autoRefreshMinutes);
  for (ChildForm* form : forms()) changeLook(*form, look_, now);
  look_ = now;
}

void mdiMenu::runAction(const QString& menuName, const MenuLine& line) {
  if (line.need == Need::Layout) return saveLayout();
  if (line.command) {
    ChildForm* form = activeForm();
    if (form && form->supports(*line.command)) form->run(*line.command);
    return;
  }
  if (const QString form = formOfMenu(menuName); !form.isEmpty()) return openForm(form);
  if (const auto handler = handlers_.value(menuName)) handler();
}

// --- Enabling ---

void mdiMenu::updateCommands() {
  for (QAction* action : std::as_const(actions_)) {
    const MenuLine& line = *lineOf(action);
    if (action->menu() || action->isSeparator() || line.need == Need::TextField) continue;
    action->setEnabled(enabledNow(line, action->objectName()));
  }
  for (const auto& [tool, entry] : std::as_const(tools_))
    tool->setEnabled(session_.databaseOpen() && entry->isEnabled());
  cmbEwiRejestr_->setEnabled(session_.databaseOpen());
}

bool mdiMenu::enabledNow(const MenuLine& line, const QString& menuName) const {
  const ChildForm* form = activeForm();
  switch (line.need) {
    case Need::Nothing:
      return true;
    case Need::TextField:
      return true;
    case Need::Later:
      return false;
    case Need::Database:
      return session_.databaseOpen();
    case Need::Form:
      return session_.databaseOpen() && formAvailable(formOfMenu(menuName));
    case Need::Window:
      return form != nullptr;
    case Need::Layout:
      return form && form->hasLayout();
    case Need::Active:
    case Need::Change:
      return form && form->supports(*line.command) && (line.need != Need::Change || mayChange(session_));
  }
  return false;
}

void mdiMenu::activeFormChanged() {
  // Rights depend on the active form, so that its buttons may be those of the one before.
  if (ChildForm* form = activeForm()) Q_EMIT form->commandsChanged();
  updateCommands();
}

void mdiMenu::updateEditMenu() {
  const TextFieldState state = focusedTextField();
  findChild<QAction*>(QStringLiteral("mnuEdycjaWytnij"))->setEnabled(state.canCut);
  findChild<QAction*>(QStringLiteral("mnuEdycjaKopiuj"))->setEnabled(state.canCopy);
  findChild<QAction*>(QStringLiteral("mnuEdycjaWklej"))->setEnabled(state.canPaste);
}

// --- Child forms ---

void mdiMenu::showForm(ChildForm* form) {
  connect(form, &ChildForm::commandsChanged, this, &mdiMenu::updateCommands);
  children_->showForm(form);
  updateCommands();
}

void mdiMenu::openForm(const QString& formName) {
  guarded(session_, "FormOpen", [&] {
    if (activateForm(formName)) return;
    if (ChildForm* form = createForm(session_, formName)) showForm(form);
  });
}

bool mdiMenu::FormCloseAll(ChildForm* except) {
  QList<ChildForm*> closing = forms();
  closing.removeAll(except);
  const ChildForm* refused = children_->closeInTurn(closing);
  if (!refused) return true;
  Failure failure;
  failure.number = kFormRefused;
  failure.source = session_.title();
  failure.description = QStringLiteral("Nie można zamknąć okna: ") + refused->windowTitle();
  failure.procedure = QStringLiteral("FormCloseAll");
  reportFailure(session_, failure);
  return false;
}

void mdiMenu::refreshLists() {
  for (ChildForm* form : forms())
    if (form->formName().startsWith(u"kar")) guarded(session_, "KarRefresh", [form] { form->KarRefresh(); });
}

void mdiMenu::popupMenu(ContextMenu menu, const QPoint& globalPosition) {
  updateCommands();
  const ChildForm* form = activeForm();
  for (QAction* action : contextMenus_[menu]->findChildren<QAction*>()) {
    const MenuLine* line = lineOf(action);
    if (!line || !line->command || !form) continue;
    const bool on = form->isOn(*line->command);
    action->setCheckable(on || action->isCheckable());
    action->setChecked(on);
  }
  contextMenus_[menu]->popup(globalPosition);
}

void mdiMenu::saveLayout() {
  ChildForm* form = activeForm();
  if (!form) return;
  const Answer answer = session_.messages().show(
      {QStringLiteral("Ustawienia wyglądu okna, takie jak: szerokość pól wyboru, porządek sortowania oraz "
                      "szerokość kolumn tablicy zostaną zapisane.\n"
                      "[Tak] - zapisanie ustawień użytkownika\n"
                      "[Nie] - przywrócenie ustawień standardowych\n"
                      "[Anuluj] - rezygnacja z zapisu ustawień"),
       {},
       Icon::Question,
       Buttons::YesNoCancel,
       Answer::Yes});
  if (answer != Answer::Cancel) form->KarSaveParam(answer == Answer::Yes);
}

void mdiMenu::fillWindowList() {
  qDeleteAll(windowList_);
  windowList_.clear();
  auto* menu = findChild<QMenu*>(QStringLiteral("mnuOkno"));
  const QList<ChildForm*> open = forms();
  if (open.isEmpty()) return;
  windowList_ << menu->addSeparator();
  for (int i = 0; i < open.size(); ++i) {
    ChildForm* form = open[i];
    const QString number = i < 9 ? QStringLiteral("&%1 ").arg(i + 1) : QString();
    QAction* entry = menu->addAction(number + form->windowTitle());
    entry->setCheckable(true);
    entry->setChecked(form == activeForm());
    connect(entry, &QAction::triggered, form, [this, form] {
      children_->setActiveSubWindow(qobject_cast<QMdiSubWindow*>(form->parentWidget()));
    });
    windowList_ << entry;
  }
}

// --- Status bar ---

void mdiMenu::setStatusText(const QString& text) {
  statusText_->setText(text);
  QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void mdiMenu::showUserName(const QString& userName) { statusUser_->setText(userName); }

// --- The session ---

void mdiMenu::databaseOpened() {
  // Some window managers leave no window active when both login dialogs go at once.
  activateWindow();
  autoRefresh_.setMinutes(session_.settings().program().autoRefreshMinutes);
  openStartForm();
  updateCommands();
}

void mdiMenu::openStartForm() {
  static const QMap<QString, QString> forms = {{QStringLiteral("Panel"), QStringLiteral("karEWPAN")},
                                               {QStringLiteral("Pracownicy"), QStringLiteral("karSWPRA")},
                                               {QStringLiteral("Przedmioty"), QStringLiteral("karEWKAR")}};
  const QString form = forms.value(session_.settings().program().startForm);
  if (!form.isEmpty() && formAvailable(form)) openForm(form);
}

void mdiMenu::placeAtStart() { placeMainWindow(*this, session_.settings()); }

void mdiMenu::rememberPlace() { rememberMainWindow(*this, session_.settings()); }

void mdiMenu::closeEvent(QCloseEvent* event) {
  if (children_->closeInTurn(forms())) {
    event->ignore();
    return;
  }
  endSession();
  event->accept();
}

void mdiMenu::endSession() {
  rememberPlace();
  Settings& settings = session_.settings();
  settings.SettingSet(QStringLiteral("Baza"), cmbBaza_->currentText());
  settings.SettingSet(QStringLiteral("Rejestr"), QString::number(session_.currentRegister()));
  settings.SettingSet(QStringLiteral("Miesiac"), QString::number(session_.currentMonth()));
  settings.SettingSet(QStringLiteral("Rok"), QString::number(session_.currentYear()));
  settings.SettingsSaveAtExit();
  autoRefresh_.setMinutes(0);
  session_.closeDatabase();
}

void mdiMenu::changeEvent(QEvent* event) {
  QMainWindow::changeEvent(event);
  // A database opened in another program shows its changes when the user comes back.
  if (event->type() == QEvent::ActivationChange && isActiveWindow()) updateCommands();
}

}  // namespace tandeko
