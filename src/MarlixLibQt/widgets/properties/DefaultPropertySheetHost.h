#pragma once

#include <MarlixLibQt/MarlixLibQtExport.h>
#include <MarlixLibQt/widgets/properties/IPropertySheetHost.h>

#include <QString>

namespace Marlix::Widgets {

/// A complete stand-alone host: its own null controller and permissive entity context, models of its own, native
/// file dialogs that remember the last directory.
class MARLIXLIBQT_EXPORT DefaultPropertySheetHost : public IPropertySheetHost,
                                                    public DefaultPropertyController,
                                                    public DefaultEntityHandleContext
{
public:
    /// Source text of the title of the directory picker.
    static constexpr const char* SELECT_DIRECTORY_TITLE
        = QT_TRANSLATE_NOOP("Marlix::Widgets::DefaultPropertySheetHost", "Select Directory");
    /// Source text of the title of the file pickers.
    static constexpr const char* SELECT_FILE_TITLE
        = QT_TRANSLATE_NOOP("Marlix::Widgets::DefaultPropertySheetHost", "Select File");

    /// The file dialog that one pick shows, worked out before anything is shown.
    struct FileDialogRequest
    {
        /// Which of the platform's file dialogs is shown.
        enum class Kind
        {
            ExistingDirectory, ///< A directory that exists.
            OpenFile, ///< A file that exists, to read.
            SaveFile, ///< A file to write; the dialog asks before an existing one is replaced.
        };

        Kind kind = Kind::OpenFile; ///< The dialog to show.
        QString title; ///< Window title.
        /// Where the dialog opens; empty lets the dialog choose.
        QString startPath;
        QString filter; ///< The file-type filter of the path flags; empty for directories.
        bool showDirsOnly = false; ///< Only directories are listed; set for the directory picker.

        bool operator==(const FileDialogRequest&) const = default; ///< Equal when every field is.
    };

    /// A host over `entityGraphTracker`, `thumbnailManager` and `undoManager`, each of which may be null (no undo
    /// without a manager); display units start at the defaults and the remembered lists empty.
    DefaultPropertySheetHost(SharedPtr<EntityGraphTracker> entityGraphTracker,
        SharedPtr<ThumbnailManager> thumbnailManager, SharedPtr<IUndoManager> undoManager);
    /// Copies share the trackers, managers and models; the remembered directory is copied.
    DefaultPropertySheetHost(const DefaultPropertySheetHost&);
    DefaultPropertySheetHost(DefaultPropertySheetHost&&) noexcept; ///< \overload
    DefaultPropertySheetHost& operator=(const DefaultPropertySheetHost&); ///< Copies like the copy constructor.
    DefaultPropertySheetHost& operator=(DefaultPropertySheetHost&&) noexcept; ///< \overload
    ~DefaultPropertySheetHost() override;

    SharedPtr<Model<DisplayUnits>> getDisplayUnitsModel() const override;
    SharedPtr<Model<Stack<String>>> getCollapsiblesModel() const override;
    SharedPtr<Model<Stack<EntityHolder<Entity>>>> getRecentEntitiesModel() const override;
    /// The one tracker of this host, whatever class is asked for.
    SharedPtr<EntityGraphTracker> getEntityGraphTracker(const EntityClassInfo* entityClass) const override;
    SharedPtr<ThumbnailManager> getThumbnailManager() const override;
    SharedPtr<IUndoManager> getUndoManager() const override;
    IPropertyController& getPropertyController() override;
    IEntityHandleContext& getEntityHandleContext() override;
    IViewportHost* getViewportHost() override;
    /// An Exception for a mode other than directory, file to open or file to save; nothing is shown then.
    Optional<Io::Path> pickFile(const UiPathFlags& flags, Optional<Io::Path> current) const override;

    /// The directory the next pick starts in when it is given no current path.
    const Optional<Io::Path>& getRememberedDirectory() const { return rememberedDirectory; }

    /// The dialog for `flags`, opening at `current`, else at `remembered`; an Exception for an unknown mode.
    static FileDialogRequest makeFileDialogRequest(
        const UiPathFlags& flags, const Optional<Io::Path>& current, const Optional<Io::Path>& remembered);
    /// The directory to start the next pick in after `chosen` was picked in `mode`.
    static Io::Path directoryToRemember(UiPathFlags::Mode mode, const Io::Path& chosen);

protected:
    /// Shows the dialog modally and returns the chosen path, empty when cancelled.
    virtual QString runFileDialog(const FileDialogRequest& request) const;

private:
    SharedPtr<EntityGraphTracker> entityGraphTracker;
    SharedPtr<ThumbnailManager> thumbnailManager;
    SharedPtr<IUndoManager> undoManager;
    SharedPtr<VariableModel<DisplayUnits>> displayUnitsModel;
    SharedPtr<VariableModel<Stack<String>>> collapsiblesModel;
    SharedPtr<VariableModel<Stack<EntityHolder<Entity>>>> recentEntitiesModel;
    // A pick is an answer to a user action, not a change of the host, so a const host still remembers it.
    mutable Optional<Io::Path> rememberedDirectory;
};

} // namespace Marlix::Widgets
