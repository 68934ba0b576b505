<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>QObject</name>
    <message>
        <source>(no stops: the gradient is black)</source>
        <translation>(keine Farbstopps: der Verlauf ist schwarz)</translation>
    </message>
    <message>
        <source>ColorPickerWidget on one shared Model&lt;QColorExtended&gt;</source>
        <translation>ColorPickerWidget an einem gemeinsamen Model&lt;QColorExtended&gt;</translation>
    </message>
    <message>
        <source>The same colour, seen as the system&apos;s Model&lt;Rgb&gt;</source>
        <translation>Dieselbe Farbe, gesehen als Model&lt;Rgb&gt; des Systems</translation>
    </message>
    <message>
        <source>Shared Colour</source>
        <translation>Gemeinsame Farbe</translation>
    </message>
    <message>
        <source>ColorEditButton (click: dialog)</source>
        <translation>ColorEditButton (Klick: Dialog)</translation>
    </message>
    <message>
        <source>Linear values</source>
        <translation>Lineare Werte</translation>
    </message>
    <message>
        <source>Every view observes the one model: move a slider, type a hex value or pick with the dialog, and all of them follow. Cancel in the dialog changes nothing.</source>
        <translation>Jede Ansicht beobachtet dasselbe Modell: einen Schieberegler bewegen, einen Hex-Wert eingeben oder im Dialog wählen – alle anderen folgen. „Abbrechen“ im Dialog ändert nichts.</translation>
    </message>
    <message>
        <source>GradientControl on a Model&lt;ColorGradient&gt;</source>
        <translation>GradientControl an einem Model&lt;ColorGradient&gt;</translation>
    </message>
    <message>
        <source>Drag a handle along the ramp; double-click the ramp to add a stop with the colour there; double-click a handle to recolour it; right-click a handle to remove it.</source>
        <translation>Einen Griff am Verlauf entlangziehen; Doppelklick auf den Verlauf fügt dort einen Farbstopp mit der Farbe an dieser Stelle hinzu; Doppelklick auf einen Griff färbt ihn um; Rechtsklick auf einen Griff entfernt ihn.</translation>
    </message>
    <message>
        <source>Buttons</source>
        <translation>Schaltflächen</translation>
    </message>
    <message>
        <source>Render</source>
        <extracomment>A button that starts a render</extracomment>
        <translation>Rendern</translation>
    </message>
    <message>
        <source>Disabled</source>
        <translation>Deaktiviert</translation>
    </message>
    <message>
        <source>Tool</source>
        <translation>Werkzeug</translation>
    </message>
    <message>
        <source>Flat tool</source>
        <translation>Flaches Werkzeug</translation>
    </message>
    <message>
        <source>Cast shadows</source>
        <translation>Wirft Schatten</translation>
    </message>
    <message>
        <source>Visible to camera</source>
        <translation>Für Kamera sichtbar</translation>
    </message>
    <message>
        <source>Path tracing</source>
        <translation>Pathtracing</translation>
    </message>
    <message>
        <source>Rasterized</source>
        <translation>Rasterisiert</translation>
    </message>
    <message>
        <source>Values</source>
        <translation>Werte</translation>
    </message>
    <message>
        <source>Lambert</source>
        <translation>Lambert</translation>
    </message>
    <message>
        <source>GGX</source>
        <translation>GGX</translation>
    </message>
    <message>
        <source>Sheen</source>
        <translation>Sheen</translation>
    </message>
    <message>
        <source>Model</source>
        <translation>Modell</translation>
    </message>
    <message>
        <source>Distance</source>
        <translation>Entfernung</translation>
    </message>
    <message>
        <source>Roughness</source>
        <translation>Rauheit</translation>
    </message>
    <message>
        <source>Key light</source>
        <translation>Führungslicht</translation>
    </message>
    <message>
        <source>The name shown in the scene lister</source>
        <translation>Der im Szenen-Lister angezeigte Name</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Progress</source>
        <translation>Fortschritt</translation>
    </message>
    <message>
        <source>Entity</source>
        <translation>Entität</translation>
    </message>
    <message>
        <source>Class</source>
        <translation>Klasse</translation>
    </message>
    <message>
        <source>Scene</source>
        <translation>Szene</translation>
    </message>
    <message>
        <source>Lights</source>
        <translation>Lichter</translation>
    </message>
    <message>
        <source>Group</source>
        <translation>Gruppe</translation>
    </message>
    <message>
        <source>Light</source>
        <translation>Licht</translation>
    </message>
    <message>
        <source>Rim light</source>
        <translation>Kantenlicht</translation>
    </message>
    <message>
        <source>Meshes</source>
        <translation>Meshes</translation>
    </message>
    <message>
        <source>Teapot</source>
        <translation>Teekanne</translation>
    </message>
    <message>
        <source>Mesh</source>
        <translation>Mesh</translation>
    </message>
    <message>
        <source>Floor</source>
        <translation>Boden</translation>
    </message>
    <message>
        <source>Tooltips</source>
        <translation>Tooltips</translation>
    </message>
    <message>
        <source>Exposure</source>
        <translation>Belichtung</translation>
    </message>
    <message>
        <source>Stops of light.</source>
        <translation>Blendenstufen.</translation>
    </message>
    <message>
        <source>Indirect clamp</source>
        <translation>Begrenzung indirekt</translation>
    </message>
    <message>
        <source>Limits the brightness of indirect samples so that rare bright paths do not show as fireflies. Lower values trade energy for a cleaner image.
&lt;p&gt;&lt;i&gt;0 disables the clamp.&lt;/i&gt;&lt;/p&gt;</source>
        <translation>Begrenzt die Helligkeit indirekter Samples, damit seltene helle Pfade nicht als Glühwürmchen erscheinen. Kleinere Werte tauschen Energie gegen ein saubereres Bild.
&lt;p&gt;&lt;i&gt;0 schaltet die Begrenzung aus.&lt;/i&gt;&lt;/p&gt;</translation>
    </message>
    <message>
        <source>Render settings</source>
        <translation>Render-Einstellungen</translation>
    </message>
    <message>
        <source>Preview through the curves</source>
        <translation>Vorschau durch die Kurven</translation>
    </message>
    <message>
        <source>Histogram of the image, red, green and blue on a logarithmic scale</source>
        <translation>Histogramm des Bildes, Rot, Grün und Blau auf logarithmischer Skala</translation>
    </message>
    <message>
        <source>Curves</source>
        <translation>Kurven</translation>
    </message>
    <message>
        <source>Click to add a point, drag it, right-click to remove it; Shift and the wheel zoom, the middle button pans.</source>
        <translation>Klicken fügt einen Punkt hinzu, Ziehen verschiebt ihn, Rechtsklick entfernt ihn; Umschalt und Mausrad zoomen, die mittlere Maustaste verschiebt die Ansicht.</translation>
    </message>
    <message>
        <source>Editor</source>
        <translation>Editor</translation>
    </message>
    <message>
        <source>Edits the model</source>
        <translation>Bearbeitet das Modell</translation>
    </message>
    <message>
        <source>Second view of the same model</source>
        <translation>Zweite Ansicht desselben Modells</translation>
    </message>
    <message>
        <source>Numbers</source>
        <translation>Zahlen</translation>
    </message>
    <message>
        <source>Exposure in stops: type, step with the arrow keys or the wheel, or drag the arrows up and down (Shift ten times faster, Ctrl ten times slower).</source>
        <translation>Belichtung in Blendenstufen: eingeben, mit den Pfeiltasten oder dem Mausrad schrittweise ändern oder die Pfeile auf- und abziehen (Umschalt zehnmal schneller, Strg zehnmal langsamer).</translation>
    </message>
    <message>
        <source>Number with a unit</source>
        <translation>Zahl mit Einheit</translation>
    </message>
    <message>
        <source>A distance kept in metres and shown in centimetres; the field beside it shows the same model in metres.</source>
        <translation>Eine Entfernung, in Metern gespeichert und in Zentimetern angezeigt; das Feld daneben zeigt dasselbe Modell in Metern.</translation>
    </message>
    <message>
        <source>Slider, linear</source>
        <translation>Schieberegler, linear</translation>
    </message>
    <message>
        <source>Roughness from 0 to 1: equal distances, equal steps.</source>
        <translation>Rauheit von 0 bis 1: gleiche Abstände, gleiche Schritte.</translation>
    </message>
    <message>
        <source>Slider, logarithmic</source>
        <translation>Schieberegler, logarithmisch</translation>
    </message>
    <message>
        <source>A light radius from 0 to 100: small values get most of the track.</source>
        <translation>Ein Lichtradius von 0 bis 100: kleine Werte erhalten den größten Teil der Skala.</translation>
    </message>
    <message>
        <source>Several values</source>
        <translation>Mehrere Werte</translation>
    </message>
    <message>
        <source>Two objects of opacity 0.7 and 0.2: no number until one is typed or dragged, which then applies to both; the field beside it shows the first object&apos;s value.</source>
        <translation>Zwei Objekte mit den Deckkräften 0,7 und 0,2: keine Zahl, bis eine eingegeben oder gezogen wird, die dann für beide gilt; das Feld daneben zeigt den Wert des ersten Objekts.</translation>
    </message>
    <message>
        <source>%1 mm</source>
        <translation>%1 mm</translation>
    </message>
    <message>
        <source>Presets</source>
        <translation>Vorgaben</translation>
    </message>
    <message>
        <source>Vectors, transformations and time</source>
        <translation>Vektoren, Transformationen und Zeit</translation>
    </message>
    <message>
        <source>A focal length with a menu of the usual lenses beside it.</source>
        <translation>Eine Brennweite mit einem Menü der üblichen Objektive daneben.</translation>
    </message>
    <message>
        <source>Three fields on one array model: each field writes the whole array.</source>
        <translation>Drei Felder an einem Array-Modell: jedes Feld schreibt das ganze Array.</translation>
    </message>
    <message>
        <source>A transformation in centimetres and degrees; beside it the same one in metres and radians.</source>
        <translation>Eine Transformation in Zentimetern und Grad; daneben dieselbe in Metern und Radiant.</translation>
    </message>
    <message>
        <source>A duration of up to a day, kept in milliseconds and edited as hours, minutes and seconds.</source>
        <translation>Eine Dauer bis zu einem Tag, in Millisekunden gespeichert und als Stunden, Minuten und Sekunden bearbeitet.</translation>
    </message>
    <message>
        <source>Choose a folder</source>
        <translation>Ordner wählen</translation>
    </message>
    <message>
        <source>Open</source>
        <extracomment>The title of the dialog that picks a file to open</extracomment>
        <translation>Öffnen</translation>
    </message>
    <message>
        <source>Save as</source>
        <translation>Speichern unter</translation>
    </message>
    <message>
        <source>Choices, text and paths</source>
        <translation>Auswahl, Text und Pfade</translation>
    </message>
    <message>
        <source>A switch; its context menu resets and copies it.</source>
        <translation>Ein Schalter; sein Kontextmenü setzt ihn zurück und kopiert ihn.</translation>
    </message>
    <message>
        <source>Cast shadows (second view)</source>
        <translation>Wirft Schatten (zweite Ansicht)</translation>
    </message>
    <message>
        <source>An enumeration; the wheel changes it only with the keyboard focus. The second list opens upwards.</source>
        <translation>Eine Aufzählung; das Mausrad ändert sie nur, wenn sie den Tastaturfokus hat. Die zweite Liste öffnet sich nach oben.</translation>
    </message>
    <message>
        <source>A name, written to the model when editing ends; beside it a read-only field on the same model.</source>
        <translation>Ein Name, der beim Ende der Bearbeitung ins Modell geschrieben wird; daneben ein schreibgeschütztes Feld am selben Modell.</translation>
    </message>
    <message>
        <source>An environment image: typed, or picked with the browse button.</source>
        <translation>Ein Umgebungsbild: eingegeben oder mit der Schaltfläche „Durchsuchen“ gewählt.</translation>
    </message>
    <message>
        <source>Where the user is in the scene; click a part to go up to it, or type a path beside it.</source>
        <translation>Wo sich der Benutzer in der Szene befindet; ein Klick auf einen Teil geht zu ihm hinauf, oder daneben einen Pfad eingeben.</translation>
    </message>
    <message>
        <source>One shared VariableModel&lt;double&gt;</source>
        <translation>Ein gemeinsames VariableModel&lt;double&gt;</translation>
    </message>
    <message>
        <source>Opacity (slider)</source>
        <translation>Deckkraft (Schieberegler)</translation>
    </message>
    <message>
        <source>Opacity (spin box)</source>
        <translation>Deckkraft (Zahlenfeld)</translation>
    </message>
    <message>
        <source>Observer</source>
        <translation>Beobachter</translation>
    </message>
    <message>
        <source>Opacity (LambdaModel, percent)</source>
        <translation>Deckkraft (LambdaModel, Prozent)</translation>
    </message>
    <message>
        <source>Widgets never talk to each other: each sets the model and re-reads it when the model notifies.</source>
        <translation>Die Widgets sprechen nie miteinander: jedes setzt das Modell und liest es neu, wenn das Modell benachrichtigt.</translation>
    </message>
    <message>
        <source>%L1, %L2, %L3, alpha %L4</source>
        <translation>%L1; %L2; %L3; Alpha %L4</translation>
    </message>
    <message>
        <source>%L1   (%L2, %L3, %L4, %L5)</source>
        <translation>%L1   (%L2; %L3; %L4; %L5)</translation>
    </message>
    <message>
        <source>Scene tree</source>
        <translation>Szenenbaum</translation>
    </message>
    <message>
        <source>%1, second view</source>
        <translation>%1, zweite Ansicht</translation>
    </message>
    <message>
        <source>Editors</source>
        <translation>Editoren</translation>
    </message>
</context>
<context>
    <name>Studio::GraphPage</name>
    <message>
        <source>Material network</source>
        <translation>Materialnetz</translation>
    </message>
    <message>
        <source>&lt;scene as loaded&gt;</source>
        <translation>&lt;Szene wie geladen&gt;</translation>
    </message>
    <message>
        <source>Drag from a slot to connect, wheel to zoom, middle button to pan, Z to frame, right click for more.</source>
        <translation>Von einem Anschluss ziehen zum Verbinden, Mausrad zum Zoomen, mittlere Maustaste zum Verschieben, Z zum Einpassen, Rechtsklick für mehr.</translation>
    </message>
    <message>
        <source>History (Edit &gt; Undo, Redo)</source>
        <translation>Verlauf (Bearbeiten &gt; Rückgängig, Wiederholen)</translation>
    </message>
    <message>
        <source>History</source>
        <translation>Verlauf</translation>
    </message>
</context>
<context>
    <name>Studio::ListerPage</name>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>The instance&apos;s name</source>
        <translation>Der Name der Instanz</translation>
    </message>
    <message>
        <source>Visible</source>
        <translation>Sichtbar</translation>
    </message>
    <message>
        <source>Shown in renders</source>
        <translation>Wird beim Rendern gezeigt</translation>
    </message>
    <message>
        <source>Position</source>
        <translation>Position</translation>
    </message>
    <message>
        <source>Where the instance stands</source>
        <translation>Wo die Instanz steht</translation>
    </message>
    <message>
        <source>Mesh</source>
        <translation>Mesh</translation>
    </message>
    <message>
        <source>The mesh drawn</source>
        <translation>Das gezeichnete Mesh</translation>
    </message>
    <message>
        <source>Material override</source>
        <translation>Material ersetzen</translation>
    </message>
    <message>
        <source>Replaces the mesh&apos;s material</source>
        <translation>Ersetzt das Material des Meshs</translation>
    </message>
    <message>
        <source>Pivot</source>
        <translation>Drehpunkt</translation>
    </message>
    <message>
        <source>The point the instance turns about</source>
        <translation>Der Punkt, um den sich die Instanz dreht</translation>
    </message>
    <message>
        <source>Instances: the sample scene&apos;s %1 and %2 generated ones, sorted by name. Filter by name, sort by a click on a header, hide columns from the header&apos;s menu; the row above the table edits every listed instance at once.</source>
        <translation>Instanzen: die %1 der Beispielszene und %2 erzeugte, nach Namen sortiert. Nach Namen filtern, mit einem Klick auf einen Spaltenkopf sortieren, Spalten über das Menü des Spaltenkopfs ausblenden; die Zeile über der Tabelle bearbeitet alle aufgeführten Instanzen auf einmal.</translation>
    </message>
</context>
<context>
    <name>Studio::NotificationCounter</name>
    <message numerus="yes">
        <source>Value %L1, %n notification(s)</source>
        <translation>
            <numerusform>Wert %L1, %n Benachrichtigung</numerusform>
            <numerusform>Wert %L1, %n Benachrichtigungen</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>Studio::Page</name>
    <message>
        <source>Controls</source>
        <translation>Bedienelemente</translation>
    </message>
    <message>
        <source>Models</source>
        <translation>Modelle</translation>
    </message>
    <message>
        <source>Editors</source>
        <translation>Editoren</translation>
    </message>
    <message>
        <source>Colour</source>
        <translation>Farbe</translation>
    </message>
    <message>
        <source>Properties</source>
        <translation>Eigenschaften</translation>
    </message>
    <message>
        <source>Mesh properties</source>
        <translation>Mesh-Eigenschaften</translation>
    </message>
    <message>
        <source>Graph</source>
        <translation>Graph</translation>
    </message>
    <message>
        <source>Curves</source>
        <translation>Kurven</translation>
    </message>
    <message>
        <source>Lister</source>
        <translation>Lister</translation>
    </message>
</context>
<context>
    <name>Studio::PreviewViewport</name>
    <message>
        <source>Preview</source>
        <translation>Vorschau</translation>
    </message>
</context>
<context>
    <name>Studio::PropertiesPage</name>
    <message>
        <source>Select several entities with Ctrl or Shift: the sheet edits all of them at once.</source>
        <translation>Mehrere Entitäten mit Strg oder Umschalt auswählen: das Blatt bearbeitet alle auf einmal.</translation>
    </message>
    <message>
        <source>&lt;scene as loaded&gt;</source>
        <translation>&lt;Szene wie geladen&gt;</translation>
    </message>
    <message>
        <source>Scene</source>
        <translation>Szene</translation>
    </message>
    <message>
        <source>Properties</source>
        <translation>Eigenschaften</translation>
    </message>
    <message>
        <source>History (Edit &gt; Undo, Redo)</source>
        <translation>Verlauf (Bearbeiten &gt; Rückgängig, Wiederholen)</translation>
    </message>
    <message>
        <source>Properties (nothing selected)</source>
        <translation>Eigenschaften (nichts ausgewählt)</translation>
    </message>
    <message>
        <source>Properties of %1</source>
        <translation>Eigenschaften von %1</translation>
    </message>
    <message>
        <source>Properties of %1 entities: %2</source>
        <translation>Eigenschaften von %1 Entitäten: %2</translation>
    </message>
    <message>
        <source>History</source>
        <translation>Verlauf</translation>
    </message>
</context>
<context>
    <name>Studio::StudioWindow</name>
    <message>
        <source>Marlix Studio</source>
        <translation>Marlix Studio</translation>
    </message>
    <message>
        <source>Pages</source>
        <translation>Seiten</translation>
    </message>
    <message>
        <source>&lt;empty&gt;</source>
        <translation>&lt;leer&gt;</translation>
    </message>
    <message>
        <source>Undo history</source>
        <translation>Rückgängig-Verlauf</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>&amp;Bearbeiten</translation>
    </message>
    <message>
        <source>&amp;Undo</source>
        <translation>&amp;Rückgängig</translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation>&amp;Wiederholen</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>&amp;Layout</source>
        <translation>&amp;Layout</translation>
    </message>
    <message>
        <source>&amp;Reset layout</source>
        <translation>Layout &amp;zurücksetzen</translation>
    </message>
    <message>
        <source>Ready</source>
        <translation>Bereit</translation>
    </message>
</context>
</TS>
