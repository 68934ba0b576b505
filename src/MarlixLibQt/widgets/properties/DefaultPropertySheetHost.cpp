#include <MarlixLib/base/Exception.h>
#include <MarlixLib/undo/IUndoManager.h>
#include <MarlixLibQt/widgets/properties/DefaultPropertySheetHost.h>

#include <QCoreApplication>
#include <QFileDialog>

namespace Marlix::Widgets {

DefaultPropertySheetHost::DefaultPropertySheetHost(SharedPtr<EntityGraphTracker> entityGraphTracker,
    SharedPtr<ThumbnailManager> thumbnailManager, SharedPtr<IUndoManager> undoManager)
    : entityGraphTracker(std::move(entityGraphTracker))
    , thumbnailManager(std::move(thumbnailManager))
    , undoManager(std::move(undoManager))
    , displayUnitsModel(makeSharedPtr<VariableModel<DisplayUnits>>(DEFAULT_DISPLAY_UNITS))
    , collapsiblesModel(makeSharedPtr<VariableModel<Stack<String>>>())
    , recentEntitiesModel(makeSharedPtr<VariableModel<Stack<EntityHolder<Entity>>>>())
{
}

DefaultPropertySheetHost::DefaultPropertySheetHost(const DefaultPropertySheetHost&) = default;
DefaultPropertySheetHost::DefaultPropertySheetHost(DefaultPropertySheetHost&&) noexcept = default;
DefaultPropertySheetHost& DefaultPropertySheetHost::operator=(const DefaultPropertySheetHost&) = default;
DefaultPropertySheetHost& DefaultPropertySheetHost::operator=(DefaultPropertySheetHost&&) noexcept = default;
DefaultPropertySheetHost::~DefaultPropertySheetHost() = default;

SharedPtr<Model<DisplayUnits>> DefaultPropertySheetHost::getDisplayUnitsModel() const
{
    return displayUnitsModel;
}

SharedPtr<Model<Stack<String>>> DefaultPropertySheetHost::getCollapsiblesModel() const
{
    return collapsiblesModel;
}

SharedPtr<Model<Stack<EntityHolder<Entity>>>> DefaultPropertySheetHost::getRecentEntitiesModel() const
{
    return recentEntitiesModel;
}

SharedPtr<EntityGraphTracker> DefaultPropertySheetHost::getEntityGraphTracker(const EntityClassInfo*) const
{
    return entityGraphTracker;
}

SharedPtr<ThumbnailManager> DefaultPropertySheetHost::getThumbnailManager() const
{
    return thumbnailManager;
}

SharedPtr<IUndoManager> DefaultPropertySheetHost::getUndoManager() const
{
    return undoManager;
}

IPropertyController& DefaultPropertySheetHost::getPropertyController()
{
    return *this;
}

IEntityHandleContext& DefaultPropertySheetHost::getEntityHandleContext()
{
    return *this;
}

IViewportHost* DefaultPropertySheetHost::getViewportHost()
{
    return nullptr;
}

DefaultPropertySheetHost::FileDialogRequest DefaultPropertySheetHost::makeFileDialogRequest(
    const UiPathFlags& flags, const Optional<Io::Path>& current, const Optional<Io::Path>& remembered)
{
    FileDialogRequest request;
    switch (flags.mode) {
    case UiPathFlags::Mode::Directory:
        request.kind = FileDialogRequest::Kind::ExistingDirectory;
        request.title
            = QCoreApplication::translate("Marlix::Widgets::DefaultPropertySheetHost", SELECT_DIRECTORY_TITLE);
        request.showDirsOnly = true;
        break;
    case UiPathFlags::Mode::OpenFile:
    case UiPathFlags::Mode::SaveFile:
        request.kind = flags.mode == UiPathFlags::Mode::OpenFile ? FileDialogRequest::Kind::OpenFile
                                                                 : FileDialogRequest::Kind::SaveFile;
        request.title = QCoreApplication::translate("Marlix::Widgets::DefaultPropertySheetHost", SELECT_FILE_TITLE);
        request.filter = QString::fromStdString(flags.filter);
        break;
    default:
        throw Exception("Unknown path mode " + std::to_string(static_cast<std::uint64_t>(flags.mode))
            + ": a path is picked as a directory (0), a file to open (1) or a file to save (2)");
    }
    if (current)
        request.startPath = QString::fromStdWString(current->wstring());
    else if (remembered)
        request.startPath = QString::fromStdWString(remembered->wstring());
    return request;
}

Io::Path DefaultPropertySheetHost::directoryToRemember(UiPathFlags::Mode mode, const Io::Path& chosen)
{
    return mode == UiPathFlags::Mode::Directory ? chosen : chosen.parent_path();
}

QString DefaultPropertySheetHost::runFileDialog(const FileDialogRequest& request) const
{
    switch (request.kind) {
    case FileDialogRequest::Kind::ExistingDirectory:
        return QFileDialog::getExistingDirectory(nullptr, request.title, request.startPath,
            request.showDirsOnly ? QFileDialog::ShowDirsOnly : QFileDialog::Options());
    case FileDialogRequest::Kind::OpenFile:
        return QFileDialog::getOpenFileName(nullptr, request.title, request.startPath, request.filter, nullptr);
    case FileDialogRequest::Kind::SaveFile:
        return QFileDialog::getSaveFileName(nullptr, request.title, request.startPath, request.filter, nullptr);
    }
    Marlix::Detail::throwStopException("widgets/DefaultPropertySheetHost", __LINE__);
}

Optional<Io::Path> DefaultPropertySheetHost::pickFile(const UiPathFlags& flags, Optional<Io::Path> current) const
{
    const FileDialogRequest request = makeFileDialogRequest(flags, current, rememberedDirectory);
    const QString result = runFileDialog(request);
    if (result.isEmpty())
        return std::nullopt;
    Io::Path chosen(result.toStdWString());
    rememberedDirectory = directoryToRemember(flags.mode, chosen);
    return chosen;
}

} // namespace Marlix::Widgets
