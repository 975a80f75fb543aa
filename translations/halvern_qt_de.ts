<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>halvern::qt::QtAnimationDock</name>
    <message>
        <source>Animation</source>
        <translation>Animation</translation>
    </message>
    <message>
        <source>Do you want to delete the current Animation?</source>
        <translation>Möchten Sie die aktuelle Animation löschen?</translation>
    </message>
    <message>
        <source>Animation:</source>
        <translation>Animation:</translation>
    </message>
    <message>
        <source>Current Time:</source>
        <translation>Aktuelle Zeit:</translation>
    </message>
    <message>
        <source>Animation Time:</source>
        <translation>Animationsdauer:</translation>
    </message>
    <message>
        <source>&amp;Pause Animations</source>
        <translation>Animationen &amp;pausieren</translation>
    </message>
    <message>
        <source>Pause Animations</source>
        <translation>Animationen pausieren</translation>
    </message>
    <message>
        <source>&amp;Edit Mode</source>
        <translation>&amp;Bearbeitungsmodus</translation>
    </message>
    <message>
        <source>Edit Mode</source>
        <translation>Bearbeitungsmodus</translation>
    </message>
    <message>
        <source>&amp;Insert Keyframe</source>
        <translation>Keyframe &amp;einfügen</translation>
    </message>
    <message>
        <source>Add keyframe</source>
        <translation>Keyframe hinzufügen</translation>
    </message>
    <message>
        <source>Ctrl+Space</source>
        <translation>Ctrl+Space</translation>
    </message>
    <message>
        <source>&amp;Delete Keyframe</source>
        <translation>Keyframe &amp;löschen</translation>
    </message>
    <message>
        <source>Delete keyframe</source>
        <translation>Keyframe löschen</translation>
    </message>
    <message>
        <source>&amp;Add Camera</source>
        <translation>&amp;Kamera hinzufügen</translation>
    </message>
    <message>
        <source>Add Camera</source>
        <translation>Kamera hinzufügen</translation>
    </message>
    <message>
        <source>&amp;Delete Animation</source>
        <translation>&amp;Animation löschen</translation>
    </message>
    <message>
        <source>Delete Animation Camera</source>
        <translation>Animationskamera löschen</translation>
    </message>
    <message>
        <source>&amp;New Animation</source>
        <translation>&amp;Neue Animation</translation>
    </message>
    <message>
        <source>Animationslider</source>
        <translation>Zeitleiste</translation>
    </message>
    <message>
        <source>There are invalid animations and they can not be edited in Halvern.</source>
        <translation>Es gibt ungültige Animationen, die in Halvern nicht bearbeitet werden können.</translation>
    </message>
    <message>
        <source>Do you want to delete these animations?</source>
        <translation>Möchten Sie diese Animationen löschen?</translation>
    </message>
</context>
<context>
    <name>halvern::qt::QtFXMaterial</name>
    <message>
        <source>Edit effect...</source>
        <translation>Effekt bearbeiten...</translation>
    </message>
    <message>
        <source>Open Texture</source>
        <translation>Textur öffnen</translation>
    </message>
    <message>
        <source>ColorWidget</source>
        <translation>ColorWidget</translation>
    </message>
    <message>
        <source>SliderWidget</source>
        <translation>SliderWidget</translation>
    </message>
    <message>
        <source>TextureWidget</source>
        <translation>TextureWidget</translation>
    </message>
    <message>
        <source>ImageLabel</source>
        <translation>ImageLabel</translation>
    </message>
    <message>
        <source>...</source>
        <translation>...</translation>
    </message>
    <message>
        <source>Technique</source>
        <translation>Technik</translation>
    </message>
</context>
<context>
    <name>halvern::qt::QtProperties</name>
    <message>
        <source>Property</source>
        <translation>Eigenschaft</translation>
    </message>
    <message>
        <source>Value</source>
        <translation>Wert</translation>
    </message>
</context>
<context>
    <name>halvern::qt::QtScene</name>
    <message>
        <source>Hidden</source>
        <translation>Ausgeblendet</translation>
    </message>
    <message>
        <source>Cast Shadow</source>
        <translation>Wirft Schatten</translation>
    </message>
    <message>
        <source>Post Render</source>
        <translation>Zuletzt rendern</translation>
    </message>
    <message>
        <source>Transparent</source>
        <translation>Transparent</translation>
    </message>
    <message>
        <source>Scene: %1 (%2 elements).</source>
        <translation>Szene: %1 (%2 Elemente).</translation>
    </message>
</context>
<context>
    <name>halvern::qt::QtView</name>
    <message>
        <source>Viewport</source>
        <translation>Ansichtsfenster</translation>
    </message>
    <message>
        <source>Cameras</source>
        <translation>Kameras</translation>
    </message>
    <message>
        <source>Animations</source>
        <translation>Animationen</translation>
    </message>
</context>
<context>
    <name>halvern::studio::MainWindow</name>
    <message>
        <source>en</source>
        <extracomment>The code of the language, for how it writes numbers.</extracomment>
        <translation>de</translation>
    </message>
    <message>
        <source>%1 nodes, %2 triangles</source>
        <translation>%1 Knoten, %2 Dreiecke</translation>
    </message>
    <message>
        <source>Models (%1)</source>
        <translation>Modelle (%1)</translation>
    </message>
    <message>
        <source>Halvern Studio</source>
        <translation>Halvern Studio</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;Open...</source>
        <translation>Ö&amp;ffnen...</translation>
    </message>
    <message>
        <source>Open &amp;Recent</source>
        <translation>&amp;Zuletzt geöffnet</translation>
    </message>
    <message>
        <source>Load &amp;Effect...</source>
        <translation>&amp;Effekt laden...</translation>
    </message>
    <message>
        <source>Set &amp;Logo...</source>
        <translation>&amp;Logo festlegen...</translation>
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
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>&amp;Statistics</source>
        <translation>&amp;Statistik</translation>
    </message>
    <message>
        <source>&amp;Logo</source>
        <translation>&amp;Logo</translation>
    </message>
    <message>
        <source>&amp;Presentation Mode</source>
        <translation>&amp;Präsentationsmodus</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>&amp;About Halvern Studio</source>
        <translation>&amp;Über Halvern Studio</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
    <message>
        <source>Open a model</source>
        <translation>Modell öffnen</translation>
    </message>
    <message>
        <source>All files (*)</source>
        <translation>Alle Dateien (*)</translation>
    </message>
    <message>
        <source>Load an effect</source>
        <translation>Effekt laden</translation>
    </message>
    <message>
        <source>Effects (*.fx)</source>
        <translation>Effekte (*.fx)</translation>
    </message>
    <message>
        <source>Set the logo</source>
        <translation>Logo festlegen</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>About Halvern Studio</source>
        <translation>Über Halvern Studio</translation>
    </message>
    <message>
        <source>&lt;h3&gt;Halvern Studio %1&lt;/h3&gt;&lt;p&gt;Shows and edits 3D scenes with the widgets of halvern_qt.&lt;/p&gt;</source>
        <translation>&lt;h3&gt;Halvern Studio %1&lt;/h3&gt;&lt;p&gt;Zeigt und bearbeitet 3D-Szenen mit den Widgets von halvern_qt.&lt;/p&gt;</translation>
    </message>
    <message>
        <source>%1 - Halvern Studio</source>
        <translation>%1 - Halvern Studio</translation>
    </message>
    <message numerus="yes">
        <source>%n warnings</source>
        <translation>
            <numerusform>%n Warnung</numerusform>
            <numerusform>%n Warnungen</numerusform>
        </translation>
    </message>
    <message>
        <source>Cancelled</source>
        <translation>Abgebrochen</translation>
    </message>
    <message>
        <source>Opening %1</source>
        <translation>%1 wird geöffnet</translation>
    </message>
</context>
<context>
    <name>halvern::studio::Panels</name>
    <message>
        <source>Properties</source>
        <translation>Eigenschaften</translation>
    </message>
    <message>
        <source>Materials</source>
        <translation>Materialien</translation>
    </message>
    <message>
        <source>Material</source>
        <translation>Material</translation>
    </message>
    <message>
        <source>&amp;Find Node</source>
        <translation>&amp;Knoten suchen</translation>
    </message>
    <message>
        <source>Animation</source>
        <translation>Animation</translation>
    </message>
</context>
<context>
    <name>halvern::studio::RecentFiles</name>
    <message>
        <source>None yet</source>
        <translation>Noch keine</translation>
    </message>
</context>
<context>
    <name>halvern::studio::SceneDock</name>
    <message>
        <source>Scene Tree</source>
        <translation>Szenenbaum</translation>
    </message>
</context>
<context>
    <name>halvern::studio::TreeFilter</name>
    <message>
        <source>Filter by name</source>
        <translation>Nach Namen filtern</translation>
    </message>
    <message>
        <source>%1 of %2</source>
        <translation>%1 von %2</translation>
    </message>
</context>
<context>
    <name>halvern::studio::UndoHistory</name>
    <message>
        <source>Move %1</source>
        <extracomment>Stands behind &quot;Undo&quot; or &quot;Redo&quot;.</extracomment>
        <translation>(Verschieben von %1)</translation>
    </message>
    <message>
        <source>Turn %1</source>
        <extracomment>Stands behind &quot;Undo&quot; or &quot;Redo&quot;.</extracomment>
        <translation>(Drehen von %1)</translation>
    </message>
    <message>
        <source>&amp;Undo</source>
        <translation>&amp;Rückgängig</translation>
    </message>
    <message>
        <source>&amp;Redo</source>
        <translation>&amp;Wiederherstellen</translation>
    </message>
</context>
</TS>
