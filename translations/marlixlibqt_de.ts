<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>AccessibleCompositeWidget</name>
    <message>
        <source>%1 %2</source>
        <translation>%1 %2</translation>
    </message>
</context>
<context>
    <name>AccessibleCurves</name>
    <message>
        <source>Point %1: %2, %3</source>
        <translation>Punkt %1: %2; %3</translation>
    </message>
</context>
<context>
    <name>AccessibleGraphView</name>
    <message>
        <source>Output</source>
        <translation>Ausgang</translation>
    </message>
    <message>
        <source>connected</source>
        <translation>verbunden</translation>
    </message>
    <message>
        <source>not connected</source>
        <translation>nicht verbunden</translation>
    </message>
</context>
<context>
    <name>AccessibleHueBlacknessPicker</name>
    <message>
        <source>Hue and blackness</source>
        <translation>Farbton und Schwarzanteil</translation>
    </message>
    <message>
        <source>Hue</source>
        <translation>Farbton</translation>
    </message>
    <message>
        <source>Blackness</source>
        <translation>Schwarzanteil</translation>
    </message>
</context>
<context>
    <name>AccessibleWhitenessPicker</name>
    <message>
        <source>Whiteness</source>
        <translation>Weißanteil</translation>
    </message>
</context>
<context>
    <name>Marlix::Color</name>
    <message>
        <source>sRGB (0-255)</source>
        <translation>sRGB (0–255)</translation>
    </message>
    <message>
        <source>sRGB (0-1)</source>
        <translation>sRGB (0–1)</translation>
    </message>
    <message>
        <source>sRGB (0-100%)</source>
        <translation>sRGB (0–100 %)</translation>
    </message>
    <message>
        <source>Linear (0-255)</source>
        <translation>Linear (0–255)</translation>
    </message>
    <message>
        <source>Linear (0-1)</source>
        <translation>Linear (0–1)</translation>
    </message>
    <message>
        <source>Linear (0-100%)</source>
        <translation>Linear (0–100 %)</translation>
    </message>
    <message>
        <source>Selects whether the color values will be displayed/entered in sRGB or linear color space. This option modifies only the actual numbers displayed in the spinners, it does not in any way influence internal color representation or renderer behavior. With linear color space, the color picker dialog behaves the same way as the default 3ds Max color picker. With sRGB color space you can transfer numerical color values directly from 2D image editing software.</source>
        <translation>Legt fest, ob die Farbwerte im sRGB- oder im linearen Farbraum angezeigt und eingegeben werden. Diese Einstellung ändert nur die in den Zahlenfeldern angezeigten Zahlen; sie beeinflusst weder die interne Darstellung der Farbe noch das Verhalten des Renderers. Im linearen Farbraum verhält sich der Farbwähler wie der Standard-Farbwähler von 3ds Max. Im sRGB-Farbraum lassen sich Farbwerte direkt aus 2D-Bildbearbeitungsprogrammen übernehmen.</translation>
    </message>
</context>
<context>
    <name>Marlix::MessageBox</name>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::AlbedoColorPicker</name>
    <message>
        <source>Albedo</source>
        <translation>Albedo</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::ColorEditButton</name>
    <message>
        <source>, alpha %1</source>
        <translation>, Alpha %1</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::ColorPicker</name>
    <message>
        <source>Red</source>
        <translation>Rot</translation>
    </message>
    <message>
        <source>Green</source>
        <translation>Grün</translation>
    </message>
    <message>
        <source>Blue</source>
        <translation>Blau</translation>
    </message>
    <message>
        <source>Alpha</source>
        <translation>Alpha</translation>
    </message>
    <message>
        <source>Hue</source>
        <translation>Farbton</translation>
    </message>
    <message>
        <source>Saturation</source>
        <translation>Sättigung</translation>
    </message>
    <message>
        <source>Value</source>
        <extracomment>The V of HSV: how light the colour is</extracomment>
        <translation>Hellwert</translation>
    </message>
    <message>
        <source>Cyan</source>
        <translation>Cyan</translation>
    </message>
    <message>
        <source>Magenta</source>
        <translation>Magenta</translation>
    </message>
    <message>
        <source>Yellow</source>
        <translation>Gelb</translation>
    </message>
    <message>
        <source>Key</source>
        <extracomment>The K of CMYK: the black ink</extracomment>
        <translation>Schwarz</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::ColorPickerDialog</name>
    <message>
        <source>Select Color</source>
        <translation>Farbe auswählen</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::ColorPickerWidget</name>
    <message>
        <source>Left: the original color, click it to go back to it. Right: the new color.</source>
        <translation>Links: die ursprüngliche Farbe, ein Klick darauf stellt sie wieder her. Rechts: die neue Farbe.</translation>
    </message>
    <message>
        <source>RGB</source>
        <translation>RGB</translation>
    </message>
    <message>
        <source>RGBA</source>
        <translation>RGBA</translation>
    </message>
    <message>
        <source>HSV</source>
        <translation>HSV</translation>
    </message>
    <message>
        <source>HWB</source>
        <translation>HWB</translation>
    </message>
    <message>
        <source>CMYK</source>
        <translation>CMYK</translation>
    </message>
    <message>
        <source>Temperature</source>
        <translation>Temperatur</translation>
    </message>
    <message>
        <source>Albedo</source>
        <translation>Albedo</translation>
    </message>
    <message>
        <source>Values</source>
        <translation>Werte</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::CommonContextMenuOwner</name>
    <message>
        <source>Reset to default</source>
        <translation>Auf Standardwert zurücksetzen</translation>
    </message>
    <message>
        <source>Copy</source>
        <translation>Kopieren</translation>
    </message>
    <message>
        <source>Paste</source>
        <translation>Einfügen</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::Curves</name>
    <message>
        <source>Curves</source>
        <translation>Kurven</translation>
    </message>
    <message numerus="yes">
        <source>Found %n curve(s), but %1 were expected.

This can be caused for example by mismatching motion blur shutter curve and tone mapping curve files.</source>
        <translation>
            <numerusform>%n Kurve gefunden, erwartet wurden aber %1.

Das kann zum Beispiel an nicht zueinander passenden Kurvendateien für den Verschluss der Bewegungsunschärfe und für das Tone-Mapping liegen.</numerusform>
            <numerusform>%n Kurven gefunden, erwartet wurden aber %1.

Das kann zum Beispiel an nicht zueinander passenden Kurvendateien für den Verschluss der Bewegungsunschärfe und für das Tone-Mapping liegen.</numerusform>
        </translation>
    </message>
    <message>
        <source>Error</source>
        <translation>Fehler</translation>
    </message>
    <message>
        <source>Cannot load curves from a file.</source>
        <translation>Die Kurven können nicht aus der Datei geladen werden.</translation>
    </message>
    <message>
        <source>Cannot save curves to a file.</source>
        <translation>Die Kurven können nicht in einer Datei gespeichert werden.</translation>
    </message>
    <message>
        <source>In %1  Out %2</source>
        <translation>Ein %1  Aus %2</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::CurvesEditor</name>
    <message>
        <source>Curve editor</source>
        <translation>Kurveneditor</translation>
    </message>
    <message>
        <source>%1 and move the mouse up and down to set the value for the cursor on the curve point.</source>
        <translation>%1 und die Maus auf- und abbewegen, um den Wert des Cursors am Kurvenpunkt einzustellen.</translation>
    </message>
    <message>
        <source>Click</source>
        <translation>Klicken</translation>
    </message>
    <message>
        <source>Channel controls row.</source>
        <translation>Zeile der Kanaleinstellungen.</translation>
    </message>
    <message>
        <source>Channel</source>
        <translation>Kanal</translation>
    </message>
    <message>
        <source>Active channel.</source>
        <translation>Aktiver Kanal.</translation>
    </message>
    <message>
        <source>Interpolation</source>
        <translation>Interpolation</translation>
    </message>
    <message>
        <source>Interpolation of the active channel.</source>
        <translation>Interpolation des aktiven Kanals.</translation>
    </message>
    <message>
        <source>Cubic</source>
        <translation>Kubisch</translation>
    </message>
    <message>
        <source>Linear</source>
        <translation>Linear</translation>
    </message>
    <message>
        <source>Cubic Uniform</source>
        <translation>Kubisch gleichförmig</translation>
    </message>
    <message>
        <source>Cubic Chordal</source>
        <translation>Kubisch chordal</translation>
    </message>
    <message>
        <source>Allows to load/save all channels of the curve from/to a file and to reset points of the active channel.</source>
        <translation>Lädt oder speichert alle Kanäle der Kurve aus einer bzw. in eine Datei und setzt die Punkte des aktiven Kanals zurück.</translation>
    </message>
    <message>
        <source>Presets</source>
        <translation>Vorgaben</translation>
    </message>
    <message>
        <source>Load</source>
        <translation>Laden</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Speichern</translation>
    </message>
    <message>
        <source>Reset</source>
        <translation>Zurücksetzen</translation>
    </message>
    <message>
        <source>Histogram controls row.</source>
        <translation>Zeile der Histogrammeinstellungen.</translation>
    </message>
    <message>
        <source>Histogram</source>
        <translation>Histogramm</translation>
    </message>
    <message>
        <source>Histogram kind.</source>
        <translation>Art des Histogramms.</translation>
    </message>
    <message>
        <source>Logarithmic</source>
        <translation>Logarithmisch</translation>
    </message>
    <message>
        <source>Cumulative</source>
        <translation>Kumulativ</translation>
    </message>
    <message>
        <source>Equalize</source>
        <translation>Ausgleichen</translation>
    </message>
    <message>
        <source>When enabled, it allows clicking on the image to add a point on the curve where its vertical position is given by the tone of the clicked pixel. By dragging the mouse up or down horizontal position of the point can be adjusted.</source>
        <translation>Wenn eingeschaltet, fügt ein Klick ins Bild einen Kurvenpunkt hinzu, dessen senkrechte Lage der Tonwert des angeklickten Pixels bestimmt. Durch Ziehen der Maus nach oben oder unten lässt sich die waagerechte Lage des Punkts einstellen.</translation>
    </message>
    <message>
        <source>Click and drag</source>
        <translation>Klicken und ziehen</translation>
    </message>
    <message>
        <source>Master</source>
        <extracomment>The channel of all colours together</extracomment>
        <translation>Gesamt</translation>
    </message>
    <message>
        <source>Red</source>
        <translation>Rot</translation>
    </message>
    <message>
        <source>Green</source>
        <translation>Grün</translation>
    </message>
    <message>
        <source>Blue</source>
        <translation>Blau</translation>
    </message>
    <message>
        <source>Alpha</source>
        <translation>Alpha</translation>
    </message>
    <message>
        <source>Channel %1</source>
        <translation>Kanal %1</translation>
    </message>
    <message>
        <source>Select file</source>
        <translation>Datei auswählen</translation>
    </message>
    <message>
        <source>Save as</source>
        <translation>Speichern unter</translation>
    </message>
    <message>
        <source>Photoshop curve files (*.acv);;All files (*.*)</source>
        <translation>Photoshop-Kurvendateien (*.acv);;Alle Dateien (*.*)</translation>
    </message>
    <message>
        <source>Performs histogram equalization of the %1 channel which adjusts (improves) the contrast of the image.</source>
        <translation>Gleicht das Histogramm des Kanals %1 aus und verbessert so den Kontrast des Bildes.</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::CurvesEditorDialog</name>
    <message>
        <source>Velkin Curve Editor</source>
        <translation>Velkin Kurveneditor</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::DefaultPropertySheetHost</name>
    <message>
        <source>Select Directory</source>
        <translation>Ordner auswählen</translation>
    </message>
    <message>
        <source>Select File</source>
        <translation>Datei auswählen</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::Dock</name>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
    <message>
        <source>Docks side by side</source>
        <translation>Nebeneinander angedockte Fenster</translation>
    </message>
    <message>
        <source>Docks one above another</source>
        <translation>Übereinander angedockte Fenster</translation>
    </message>
    <message>
        <source>Workspace record &quot;%1&quot; refused: %2.</source>
        <translation>Arbeitsbereich-Eintrag „%1“ abgelehnt: %2.</translation>
    </message>
    <message>
        <source>the window geometry cannot be read</source>
        <translation>die Fenstergeometrie kann nicht gelesen werden</translation>
    </message>
    <message>
        <source>the sizes cannot be read</source>
        <translation>die Größen können nicht gelesen werden</translation>
    </message>
    <message>
        <source>%1 sizes for a splitter of %2</source>
        <translation>%1 Größen für einen Teiler mit %2</translation>
    </message>
    <message>
        <source>the current tab is out of range</source>
        <translation>der aktuelle Reiter liegt außerhalb des gültigen Bereichs</translation>
    </message>
    <message>
        <source>the dock is placed by an earlier record</source>
        <translation>das Fenster wurde schon von einem früheren Eintrag platziert</translation>
    </message>
    <message>
        <source>its path does not lead to a place for a dock</source>
        <translation>sein Pfad führt zu keinem Platz für ein Fenster</translation>
    </message>
    <message>
        <source>the level %1 has no index</source>
        <translation>die Ebene %1 hat keinen Index</translation>
    </message>
    <message>
        <source>the level %1 has a negative index</source>
        <translation>die Ebene %1 hat einen negativen Index</translation>
    </message>
    <message>
        <source>the index of the level %1 is not a decimal number</source>
        <translation>der Index der Ebene %1 ist keine Dezimalzahl</translation>
    </message>
    <message>
        <source>the index of the level %1 is beyond %2</source>
        <translation>der Index der Ebene %1 ist größer als %2</translation>
    </message>
    <message>
        <source>the name %1... is longer than %2 bytes</source>
        <translation>der Name %1… ist länger als %2 Byte</translation>
    </message>
    <message>
        <source>the name %1 holds control characters</source>
        <translation>der Name %1 enthält Steuerzeichen</translation>
    </message>
    <message>
        <source>the geometry of this window is not window geometry</source>
        <translation>die Geometrie dieses Fensters ist keine Fenstergeometrie</translation>
    </message>
    <message>
        <source>the window geometry is of a version that is not known</source>
        <translation>die Fenstergeometrie hat eine unbekannte Version</translation>
    </message>
    <message>
        <source>the window geometry is cut short (%1 of %2 bytes)</source>
        <translation>die Fenstergeometrie ist abgeschnitten (%1 von %2 Byte)</translation>
    </message>
    <message>
        <source>the window geometry is damaged (%1 bytes)</source>
        <translation>die Fenstergeometrie ist beschädigt (%1 Byte)</translation>
    </message>
    <message>
        <source>the record holds window geometry where splitter sizes belong</source>
        <translation>der Eintrag enthält eine Fenstergeometrie, wo Teilergrößen hingehören</translation>
    </message>
    <message>
        <source>the splitter sizes are cut short (%1 bytes)</source>
        <translation>die Teilergrößen sind abgeschnitten (%1 Byte)</translation>
    </message>
    <message>
        <source>the record gives %1 splitter sizes</source>
        <translation>der Eintrag nennt %1 Teilergrößen</translation>
    </message>
    <message>
        <source>the splitter size %1 is negative</source>
        <translation>die Teilergröße %1 ist negativ</translation>
    </message>
    <message>
        <source>the splitter size %1 is beyond %2 pixels</source>
        <translation>die Teilergröße %1 ist größer als %2 Pixel</translation>
    </message>
    <message>
        <source>the path is empty</source>
        <translation>der Pfad ist leer</translation>
    </message>
    <message>
        <source>the path is not UTF-8 text</source>
        <translation>der Pfad ist kein UTF-8-Text</translation>
    </message>
    <message>
        <source>the path has %1 levels; a workspace nests at most %2</source>
        <translation>der Pfad hat %1 Ebenen; ein Arbeitsbereich verschachtelt höchstens %2</translation>
    </message>
    <message>
        <source>the path starts with the level %1 instead of the name of a window</source>
        <translation>der Pfad beginnt mit der Ebene %1 statt mit dem Namen eines Fensters</translation>
    </message>
    <message>
        <source>%1 is not a level (H, V or T followed by an index)</source>
        <translation>%1 ist keine Ebene (H, V oder T gefolgt von einem Index)</translation>
    </message>
    <message>
        <source>the level %1 nests a container in one of its own kind</source>
        <translation>die Ebene %1 verschachtelt einen Container in einem gleicher Art</translation>
    </message>
    <message>
        <source>the path ends with the level %1 instead of a name</source>
        <translation>der Pfad endet mit der Ebene %1 statt mit einem Namen</translation>
    </message>
    <message>
        <source>Record %1 (path %2): %3</source>
        <translation>Eintrag %1 (Pfad %2): %3</translation>
    </message>
    <message>
        <source>The record of path %1: %2</source>
        <translation>Der Eintrag mit dem Pfad %1: %2</translation>
    </message>
    <message>
        <source>the path of record %1 again</source>
        <translation>noch einmal der Pfad von Eintrag %1</translation>
    </message>
    <message>
        <source>the dock %1 is already placed by record %2</source>
        <translation>das Fenster %1 wurde schon von Eintrag %2 platziert</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::DockHeader</name>
    <message>
        <source>Dock title</source>
        <translation>Fenstertitel</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::DockWindow</name>
    <message>
        <source>Docked panels</source>
        <translation>Angedockte Bereiche</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::EntityWidget</name>
    <message numerus="yes">
        <source>%n more not listed</source>
        <translation>
            <numerusform>%n weiteres nicht aufgeführt</numerusform>
            <numerusform>%n weitere nicht aufgeführt</numerusform>
        </translation>
    </message>
    <message>
        <source>None</source>
        <translation>Keines</translation>
    </message>
    <message>
        <source>Recent</source>
        <translation>Zuletzt verwendet</translation>
    </message>
    <message>
        <source>Scene</source>
        <translation>Szene</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::EyeDropperButton</name>
    <message>
        <source>Picks pixel color from anywhere on the screen. To use this picker, just drag the button to anywhere on the screen. While in this pick mode, the sampled color will be displayed in the button.</source>
        <translation>Nimmt die Farbe eines beliebigen Pixels auf dem Bildschirm auf. Dazu die Schaltfläche einfach an eine beliebige Stelle des Bildschirms ziehen. Solange dieser Aufnahmemodus aktiv ist, zeigt die Schaltfläche die aufgenommene Farbe.</translation>
    </message>
    <message>
        <source>Picks inverse of a pixel color from anywhere on the screen. The inverse color is useful for example to select a color tint for the image. To use this picker, just drag the button to anywhere on the screen. While in this pick mode, the sampled color will be displayed in the button.</source>
        <translation>Nimmt die Umkehrfarbe eines beliebigen Pixels auf dem Bildschirm auf. Die Umkehrfarbe hilft zum Beispiel, eine Tönung für das Bild zu wählen. Dazu die Schaltfläche einfach an eine beliebige Stelle des Bildschirms ziehen. Solange dieser Aufnahmemodus aktiv ist, zeigt die Schaltfläche die aufgenommene Farbe.</translation>
    </message>
    <message>
        <source>Pick inverse color from screen</source>
        <translation>Inverse Farbe vom Bildschirm aufnehmen</translation>
    </message>
    <message>
        <source>Pick color from screen</source>
        <translation>Farbe vom Bildschirm aufnehmen</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::GradientControl</name>
    <message>
        <source>Select Color</source>
        <translation>Farbe auswählen</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::GraphView</name>
    <message>
        <source>Node graph</source>
        <translation>Knotengraph</translation>
    </message>
    <message>
        <source>Add Node</source>
        <translation>Knoten hinzufügen</translation>
    </message>
    <message>
        <source>Create Node</source>
        <translation>Knoten erstellen</translation>
    </message>
    <message>
        <source>Add %1</source>
        <translation>%1 hinzufügen</translation>
    </message>
    <message>
        <source>Add Existing</source>
        <translation>Vorhandenes hinzufügen</translation>
    </message>
    <message>
        <source>Rearrange All</source>
        <translation>Alle neu anordnen</translation>
    </message>
    <message>
        <source>Rearrange Selection</source>
        <translation>Auswahl neu anordnen</translation>
    </message>
    <message>
        <source>Zoom to All</source>
        <translation>Auf alles zoomen</translation>
    </message>
    <message>
        <source>Zoom to Selection</source>
        <translation>Auf Auswahl zoomen</translation>
    </message>
    <message>
        <source>Duplicate Selected</source>
        <translation>Auswahl duplizieren</translation>
    </message>
    <message>
        <source>Remove Selected</source>
        <translation>Auswahl entfernen</translation>
    </message>
    <message>
        <source>Connect Node</source>
        <translation>Knoten verbinden</translation>
    </message>
    <message>
        <source>Disconnect Node</source>
        <translation>Knotenverbindung trennen</translation>
    </message>
    <message>
        <source>Move Node</source>
        <translation>Knoten verschieben</translation>
    </message>
    <message>
        <source>Rearrange Nodes</source>
        <translation>Knoten neu anordnen</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::HexColorEditor</name>
    <message>
        <source>Hex color</source>
        <translation>Hex-Farbe</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::Histogram</name>
    <message>
        <source>Histogram</source>
        <translation>Histogramm</translation>
    </message>
    <message>
        <source>Master</source>
        <extracomment>The channel of all colours together</extracomment>
        <translation>Gesamt</translation>
    </message>
    <message>
        <source>Red</source>
        <translation>Rot</translation>
    </message>
    <message>
        <source>Green</source>
        <translation>Grün</translation>
    </message>
    <message>
        <source>Blue</source>
        <translation>Blau</translation>
    </message>
    <message>
        <source>Alpha</source>
        <translation>Alpha</translation>
    </message>
    <message>
        <source>RGB</source>
        <translation>RGB</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::ListEditor</name>
    <message>
        <source>Add Item</source>
        <translation>Element hinzufügen</translation>
    </message>
    <message>
        <source>Presets</source>
        <translation>Vorgaben</translation>
    </message>
    <message>
        <source>Add Item to %1</source>
        <translation>Element zu %1 hinzufügen</translation>
    </message>
    <message>
        <source>Remove Item from %1</source>
        <translation>Element aus %1 entfernen</translation>
    </message>
    <message>
        <source>Move Item in %1</source>
        <translation>Element in %1 verschieben</translation>
    </message>
    <message>
        <source>Apply Preset to %1</source>
        <translation>Vorgabe auf %1 anwenden</translation>
    </message>
    <message>
        <source>Item %1 of %2</source>
        <translation>Element %1 von %2</translation>
    </message>
    <message>
        <source>Move Item %1 Up</source>
        <translation>Element %1 nach oben verschieben</translation>
    </message>
    <message>
        <source>Move Item %1 Down</source>
        <translation>Element %1 nach unten verschieben</translation>
    </message>
    <message>
        <source>Remove Item %1</source>
        <translation>Element %1 entfernen</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::ListerDialog</name>
    <message>
        <source>Velkin Lister</source>
        <translation>Velkin Lister</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::ListerHeader</name>
    <message>
        <source>Hide column</source>
        <translation>Spalte ausblenden</translation>
    </message>
    <message>
        <source>Hide this column</source>
        <translation>Diese Spalte ausblenden</translation>
    </message>
    <message>
        <source>Unhide all</source>
        <translation>Alle einblenden</translation>
    </message>
    <message>
        <source>Unhide all columns</source>
        <translation>Alle Spalten einblenden</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::ListerModel</name>
    <message>
        <source>Actions</source>
        <translation>Aktionen</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::ListerPanel</name>
    <message>
        <source>All listed objects</source>
        <translation>Alle Objekte</translation>
    </message>
    <message>
        <source>Filter by name</source>
        <translation>Nach Name filtern</translation>
    </message>
    <message>
        <source>Name filter</source>
        <translation>Namensfilter</translation>
    </message>
    <message>
        <source>Objects listed</source>
        <translation>Aufgeführte Objekte</translation>
    </message>
    <message>
        <source>Objects</source>
        <translation>Objekte</translation>
    </message>
    <message>
        <source>Master row</source>
        <translation>Sammelzeile</translation>
    </message>
    <message>
        <source>Edits here apply to every listed object</source>
        <translation>Änderungen hier gelten für jedes aufgeführte Objekt</translation>
    </message>
    <message numerus="yes">
        <source>%n objects</source>
        <translation>
            <numerusform>%n Objekt</numerusform>
            <numerusform>%n Objekte</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::ListerView</name>
    <message>
        <source>Collapse</source>
        <translation>Zuklappen</translation>
    </message>
    <message>
        <source>Expand</source>
        <translation>Aufklappen</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::ListerViewDelegate</name>
    <message>
        <source>Actions</source>
        <translation>Aktionen</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 von %2</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::MainWindow</name>
    <message>
        <source>Internal menu</source>
        <translation>Internes Menü</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::OpenGlWidget</name>
    <message>
        <source>OpenGL is not available</source>
        <translation>OpenGL ist nicht verfügbar</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::Path</name>
    <message>
        <source>Browse</source>
        <translation>Durchsuchen</translation>
    </message>
    <message>
        <source>Path</source>
        <translation>Pfad</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::PopupWrapper</name>
    <message>
        <source>Pop-up</source>
        <translation>Aufklappfenster</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::PosRotScale</name>
    <message>
        <source>Position</source>
        <translation>Position</translation>
    </message>
    <message>
        <source>Rotation</source>
        <translation>Drehung</translation>
    </message>
    <message>
        <source>Scale</source>
        <translation>Skalierung</translation>
    </message>
    <message>
        <source>Shear</source>
        <translation>Scherung</translation>
    </message>
    <message>
        <source>Reset all</source>
        <translation>Alles zurücksetzen</translation>
    </message>
    <message>
        <source>Reset all (keep position)</source>
        <translation>Alles zurücksetzen (Position behalten)</translation>
    </message>
    <message>
        <source>Reset shear</source>
        <translation>Scherung zurücksetzen</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::PropertyModelBase</name>
    <message>
        <source>Update of </source>
        <translation>Änderung von </translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::PropertySheetItem</name>
    <message>
        <source>No editor</source>
        <translation>Kein Editor</translation>
    </message>
    <message>
        <source>Reset to Default</source>
        <translation>Auf Standardwert zurücksetzen</translation>
    </message>
    <message>
        <source>Reset to the default value</source>
        <translation>Auf den Standardwert zurücksetzen</translation>
    </message>
    <message>
        <source>Reset of </source>
        <translation>Zurücksetzen von </translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::PropertyWidgetConstructor</name>
    <message>
        <source>Property &quot;%1&quot; not found</source>
        <translation>Eigenschaft „%1“ nicht gefunden</translation>
    </message>
    <message>
        <source>Values of %1 cannot be edited</source>
        <translation>Werte vom Typ %1 können nicht bearbeitet werden</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::ScreenColorPicker</name>
    <message>
        <source>Point Sample</source>
        <translation>Einzelner Pixel</translation>
    </message>
    <message>
        <source>3 by 3 Average</source>
        <translation>Mittel aus 3 × 3</translation>
    </message>
    <message>
        <source>5 by 5 Average</source>
        <translation>Mittel aus 5 × 5</translation>
    </message>
    <message>
        <source>11 by 11 Average</source>
        <translation>Mittel aus 11 × 11</translation>
    </message>
    <message>
        <source>31 by 31 Average</source>
        <translation>Mittel aus 31 × 31</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::SpinBox</name>
    <message>
        <source>&lt;different values&gt;</source>
        <translation>&lt;mehrere Werte&gt;</translation>
    </message>
    <message>
        <source>&lt;small&gt;Hint: Dragging speed can be increased 10x with SHIFT being hold and decreased 10x by holding CTRL.&lt;/small&gt;</source>
        <translation>&lt;small&gt;Tipp: Mit gedrückter UMSCHALT-Taste ist das Ziehen 10-mal schneller, mit gedrückter STRG-Taste 10-mal langsamer.&lt;/small&gt;</translation>
    </message>
    <message>
        <source>Value range: </source>
        <translation>Wertebereich: </translation>
    </message>
    <message>
        <source>Minimum value: </source>
        <translation>Kleinster Wert: </translation>
    </message>
    <message>
        <source>Maximum value: </source>
        <translation>Größter Wert: </translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::Tabber</name>
    <message>
        <source>Undock</source>
        <translation>Abdocken</translation>
    </message>
    <message>
        <source>Docked tabs</source>
        <translation>Angedockte Reiter</translation>
    </message>
</context>
<context>
    <name>Marlix::Widgets::TemperatureColorPicker</name>
    <message>
        <source>Temp. [K]</source>
        <translation>Temp. [K]</translation>
    </message>
</context>
</TS>
