<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="zh_CN">
    <context>
        <name>MainWindow</name>
        <message>
            <source>上传数据</source>
            <translation>Upload Data</translation>
        </message>
        <message>
            <source>导出数据</source>
            <translation>Export Data</translation>
        </message>
        <message>
            <source>导入数据</source>
            <translation>Import Data</translation>
        </message>
        <message>
            <source>打印</source>
            <translation>Print</translation>
        </message>
        <message>
            <source>软件更新</source>
            <translation>Software Update</translation>
        </message>
        <message>
            <source>设备升级</source>
            <translation>Firmware Upgrade</translation>
        </message>
        <message>
            <source>坐标设置</source>
            <translation>Coordinate Setting</translation>
        </message>
        <message>
            <source>已连接</source>
            <translation>connect</translation>
        </message>
        <message>
            <source>未连接</source>
            <translation>disconnect</translation>
        </message>
        <message>
            <source>connect</source>
            <translation>connect</translation>
        </message>
        <message>
            <source>disconnect</source>
            <translation>disconnect</translation>
        </message>
        <message>
            <source>1、主要流程：连接设备&gt;&gt;获取数据&gt;&gt;选择数据&gt;&gt;地图、图形显示&gt;&gt;数据、图形导出</source>
            <translation>1. Main steps: connect the instrument &gt;&gt; read data &gt;&gt; choose data &gt;&gt; look at the map or the drawing &gt;&gt; export data or graphics</translation>
        </message>
        <message>
            <source>2、获取数据：使用数据线将设备与电脑连接，点击获取数据按钮，软件会自动识别设备，并获取设备中的数据</source>
            <translation>2. Reading data: connect the instrument to the computer with its cable and press the read button. The program finds the instrument by itself and fetches its data.</translation>
        </message>
        <message>
            <source>3、选择数据：可以直接勾选数据，也可以在数据列表中双击数据条目选择数据，还可以勾选全选按钮选中所有数据</source>
            <translation>3. Choosing data: tick rows, double-click a row of the data list, or tick the box above a list to choose all its rows.</translation>
        </message>
        <message>
            <source>4、删除数据：将选中的数据全部删除</source>
            <translation>4. Deleting data: deletes all chosen data.</translation>
        </message>
        <message>
            <source>5、地图显示：地图上会将在数据列表中勾选的数据以图形的方式展现在地图上，并将定位到其地图中心位置，地图必须在有网络的情况下使用</source>
            <translation>5. Map: the data ticked in the list are shown as figures on the map, which is centred on them. The map needs a network connection.</translation>
        </message>
        <message>
            <source>6、图形显示：在画板上将在数据列表中勾选的数据画成对应的图形（上北下南），每一条数据的图形在起始点位置会有一个小圆圈，并且旁边会有一个数值索引，用于图形导出时与导出信息对应</source>
            <translation>6. Drawing: the data ticked in the list are drawn to scale, north up. Each figure has a small circle at its start and a number beside it, which refers to the exported information.</translation>
        </message>
        <message>
            <source>7、数据导出：导出的内容有经纬度，海拔，距离，面积和采集时间等信息，文件格式为可以为CSV、DXF、KML、GPX，导出文件可以保存到一个文件或者进行文件条目单独保存为多个文件，用户可根据实际需要进行选择导出文件保存方式。导出文件以其对应的采集时间命名</source>
            <translation>7. Exporting data: exported are longitude, latitude, altitude, distance, area, acquisition time and more. Formats are CSV, DXF, KML and GPX, into one file or into one file for each entry, as needed. Files are named after their acquisition time.</translation>
        </message>
        <message>
            <source>8、数据导入:导出的数据文件进行再次导入到软件进行查看测量距离，面积、测量图形和采集时间等信息</source>
            <translation>8. Importing data: exported files can be imported again to look at distances, areas, figures and acquisition times.</translation>
        </message>
        <message>
            <source>9、图形导出：以截图方式保存显示的地图或者图形</source>
            <translation>9. Exporting graphics: saves the map or the drawing that is shown as a picture.</translation>
        </message>
        <message>
            <source>10、坐标格式：用于设置导出数据的格式，默认格式是“度”</source>
            <translation>10. Coordinate format: sets the format of exported data; the default is degrees.</translation>
        </message>
        <message>
            <source>11、关于：本软件信息</source>
            <translation>11. About: information on this program.</translation>
        </message>
        <message>
            <source>使用说明</source>
            <translation>Instructions</translation>
        </message>
        <message>
            <source>关于 Velmo</source>
            <translation>About Velmo</translation>
        </message>
        <message>
            <source>软件名称：Velmo
软件版本：</source>
            <translation>Software name: Velmo
Software version: </translation>
        </message>
        <message>
            <source>资料下载</source>
            <translation>Data of Software Download</translation>
        </message>
        <message>
            <source>功能等待更新</source>
            <translation>This function awaits an update</translation>
        </message>
        <message>
            <source>文件</source>
            <translation>File</translation>
        </message>
        <message>
            <source>导出图形</source>
            <translation>Export Graphics</translation>
        </message>
        <message>
            <source>导出...</source>
            <translation>Export...</translation>
        </message>
        <message>
            <source>退出</source>
            <translation>Quit</translation>
        </message>
        <message>
            <source>设置</source>
            <translation>Setting</translation>
        </message>
        <message>
            <source>亩制</source>
            <translation>Mu</translation>
        </message>
        <message>
            <source>小亩</source>
            <translation>Small mu</translation>
        </message>
        <message>
            <source>地图选项</source>
            <translation>Map Options</translation>
        </message>
        <message>
            <source>高德地图</source>
            <translation>Gaode Map</translation>
        </message>
        <message>
            <source>谷歌地图</source>
            <translation>Google Map</translation>
        </message>
        <message>
            <source>天地图</source>
            <translation>Sky Map</translation>
        </message>
        <message>
            <source>帮助</source>
            <translation>Help</translation>
        </message>
        <message>
            <source>关于Velmo office</source>
            <translation>About of Velmo office</translation>
        </message>
        <message>
            <source>数据列表</source>
            <translation>Data List</translation>
        </message>
        <message>
            <source>删除</source>
            <translation>Delete</translation>
        </message>
        <message>
            <source>删除选中的数据</source>
            <translation>Delete the ticked measurements</translation>
        </message>
        <message>
            <source>全部</source>
            <translation>All</translation>
        </message>
        <message>
            <source> 面积</source>
            <translation>Area</translation>
        </message>
        <message>
            <source> 距离</source>
            <translation>Dist.</translation>
        </message>
        <message>
            <source>航点</source>
            <translation>Point</translation>
        </message>
        <message>
            <source>航线</source>
            <translation>Route</translation>
        </message>
        <message>
            <source> 航迹</source>
            <translation>Track</translation>
        </message>
        <message>
            <source>放样</source>
            <translation>Stake</translation>
        </message>
        <message>
            <source>读取进度</source>
            <translation>Progress</translation>
        </message>
        <message>
            <source> 条目信息</source>
            <translation>Item Information</translation>
        </message>
        <message>
            <source>总计勾选:</source>
            <translation>Total ticked:</translation>
        </message>
        <message>
            <source>面积:</source>
            <translation>Area:</translation>
        </message>
        <message>
            <source>周长:</source>
            <translation>Perimeter:</translation>
        </message>
        <message>
            <source>条</source>
            <translation>rec.</translation>
        </message>
        <message>
            <source>平方米</source>
            <translation>m²</translation>
        </message>
        <message>
            <source>亩</source>
            <translation>mu</translation>
        </message>
        <message>
            <source>米</source>
            <translation>m</translation>
        </message>
        <message>
            <source>测量信息</source>
            <translation>Measurement Information</translation>
        </message>
        <message>
            <source>已接收</source>
            <translation>Received</translation>
        </message>
        <message>
            <source>串口指示灯</source>
            <translation>Serial port</translation>
        </message>
        <message>
            <source>安卓设备指示灯</source>
            <translation>Android device</translation>
        </message>
        <message>
            <source>获取数据</source>
            <translation>Read Data</translation>
        </message>
        <message>
            <source>从仪器读取测量数据 (F5)</source>
            <translation>Read the measurements from the instrument (F5)</translation>
        </message>
        <message>
            <source>把勾选的数据上传到仪器</source>
            <translation>Send the ticked measurements to the instrument</translation>
        </message>
        <message>
            <source>地图</source>
            <translation>Map</translation>
        </message>
        <message>
            <source>显示地图 (Ctrl+1)</source>
            <translation>Show the map (Ctrl+1)</translation>
        </message>
        <message>
            <source>图形</source>
            <translation>Drawing</translation>
        </message>
        <message>
            <source>显示图形 (Ctrl+2)</source>
            <translation>Show the drawing (Ctrl+2)</translation>
        </message>
        <message>
            <source>打印图形</source>
            <translation>Print the drawing</translation>
        </message>
        <message>
            <source>检查软件新版本</source>
            <translation>Look for a new version of the software</translation>
        </message>
        <message>
            <source>升级仪器固件</source>
            <translation>Replace the instrument's firmware</translation>
        </message>
        <message>
            <source>厂家主页</source>
            <translation>The maker's home page</translation>
        </message>
        <message>
            <source>北</source>
            <translation>North</translation>
        </message>
        <message>
            <source>显示或隐藏测量信息</source>
            <translation>Show or hide the measurement information</translation>
        </message>
        <message>
            <source>序号</source>
            <translation>ID</translation>
        </message>
        <message>
            <source>数据名称</source>
            <translation>Data Name</translation>
        </message>
        <message>
            <source>采集时间</source>
            <translation>Acquisition Time</translation>
        </message>
        <message>
            <source>ID</source>
            <translation>ID</translation>
        </message>
        <message>
            <source>Data Name</source>
            <translation>Data Name</translation>
        </message>
        <message>
            <source>Acquisition Time</source>
            <translation>Acquisition Time</translation>
        </message>
        <message>
            <source>类型</source>
            <translation>Type</translation>
        </message>
        <message>
            <source>Type</source>
            <translation>Type</translation>
        </message>
        <message>
            <source>全选：%1</source>
            <translation>Tick all: %1</translation>
        </message>
        <message>
            <source>把勾选的数据导出到文件 (Ctrl+E)</source>
            <translation>Export the ticked measurements to files (Ctrl+E)</translation>
        </message>
        <message>
            <source>从文件导入数据 (Ctrl+O)</source>
            <translation>Import measurements from a file (Ctrl+O)</translation>
        </message>
    </context>
    <context>
        <name>thread_key</name>
        <message>
            <source>点</source>
            <translation> pts</translation>
        </message>
        <message>
            <source>条</source>
            <translation> rec.</translation>
        </message>
    </context>
    <context>
        <name>file_export_thread</name>
        <message>
            <source>csv多数据合并导出成功</source>
            <translation>csv多数据合并导出成功</translation>
        </message>
        <message>
            <source>csv单数据分开导出成功</source>
            <translation>csv单数据分开导出成功</translation>
        </message>
        <message>
            <source>gpx多数据合并导出成功</source>
            <translation>gpx多数据合并导出成功</translation>
        </message>
        <message>
            <source>gpx单数据分开导出成功</source>
            <translation>gpx单数据分开导出成功</translation>
        </message>
        <message>
            <source>kml文件导出成功</source>
            <translation>kml文件导出成功</translation>
        </message>
        <message>
            <source>Failed to create directory</source>
            <translation>Failed to create directory</translation>
        </message>
        <message>
            <source>Failed to open file</source>
            <translation>Failed to open file</translation>
        </message>
        <message>
            <source>Warning</source>
            <translation>Warning</translation>
        </message>
        <message>
            <source>dxf</source>
            <translation>dxf</translation>
        </message>
        <message>
            <source>dxf单数据分开导出成功</source>
            <translation>dxf单数据分开导出成功</translation>
        </message>
        <message>
            <source>dxf多数据合并导出成功</source>
            <translation>dxf多数据合并导出成功</translation>
        </message>
    </context>
    <context>
        <name>file_import_thread</name>
        <message>
            <source>导入</source>
            <translation>导入</translation>
        </message>
        <message>
            <source>csv文件导入失败</source>
            <translation>csv文件导入失败</translation>
        </message>
        <message>
            <source>csv多数据文件导入成功</source>
            <translation>csv多数据文件导入成功</translation>
        </message>
        <message>
            <source>csv单数据文件导入成功</source>
            <translation>csv单数据文件导入成功</translation>
        </message>
        <message>
            <source>csv文件导入成功</source>
            <translation>csv文件导入成功</translation>
        </message>
        <message>
            <source>gpx文件导入失败</source>
            <translation>gpx文件导入失败</translation>
        </message>
        <message>
            <source>gpx文件导入成功</source>
            <translation>gpx文件导入成功</translation>
        </message>
        <message>
            <source>kml文件导入失败</source>
            <translation>kml文件导入失败</translation>
        </message>
        <message>
            <source>kml文件导入成功</source>
            <translation>kml文件导入成功</translation>
        </message>
        <message>
            <source>自制kml文件导入成功</source>
            <translation>自制kml文件导入成功</translation>
        </message>
        <message>
            <source>dxf</source>
            <translation>dxf</translation>
        </message>
        <message>
            <source>dxf文件导入成功</source>
            <translation>dxf文件导入成功</translation>
        </message>
        <message>
            <source>打开dxf文件失败</source>
            <translation>打开dxf文件失败</translation>
        </message>
    </context>
    <context>
        <name>input_window</name>
        <message>
            <source>导入</source>
            <translation>Import</translation>
        </message>
        <message>
            <source>Export File</source>
            <translation>Export File</translation>
        </message>
        <message>
            <source>Xlsx Files (*.xlsx);;All Files (*)</source>
            <translation>Xlsx Files (*.xlsx);;All Files (*)</translation>
        </message>
        <message>
            <source>Open Files</source>
            <translation>Open Files</translation>
        </message>
        <message>
            <source>GIS and Data Files (*.kml *.csv *.dxf *.gpx *.xlsx *xls);;All Files (*)</source>
            <translation>GIS and Data Files (*.kml *.csv *.dxf *.gpx *.xlsx *xls);;All Files (*)</translation>
        </message>
    </context>
    <context>
        <name>outputWindow</name>
        <message>
            <source>CSV Files (*.csv);;All Files (*)</source>
            <translation>CSV Files (*.csv);;All Files (*)</translation>
        </message>
        <message>
            <source>DXF Files (*.dxf);;All Files (*)</source>
            <translation>DXF Files (*.dxf);;All Files (*)</translation>
        </message>
        <message>
            <source>GPX Files (*.gpx);;All Files (*)</source>
            <translation>GPX Files (*.gpx);;All Files (*)</translation>
        </message>
        <message>
            <source>KML Files (*.kml);;All Files (*)</source>
            <translation>KML Files (*.kml);;All Files (*)</translation>
        </message>
        <message>
            <source>PNG Files (*.png);;All Files (*)</source>
            <translation>PNG Files (*.png);;All Files (*)</translation>
        </message>
        <message>
            <source>Xlsx Files (*.xlsx);;All Files (*)</source>
            <translation>Xlsx Files (*.xlsx);;All Files (*)</translation>
        </message>
        <message>
            <source>导出为</source>
            <translation>Export As</translation>
        </message>
        <message>
            <source>Export File</source>
            <translation>Export File</translation>
        </message>
        <message>
            <source>Choose Directory</source>
            <translation>Choose Directory</translation>
        </message>
    </context>
</TS>
