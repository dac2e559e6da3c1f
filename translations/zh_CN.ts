<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN" sourcelanguage="zh_CN">
    <context>
        <name>MainWindow</name>
        <message>
            <source>上传数据</source>
            <translation>上传数据</translation>
        </message>
        <message>
            <source>导出数据</source>
            <translation>导出数据</translation>
        </message>
        <message>
            <source>导入数据</source>
            <translation>导入数据</translation>
        </message>
        <message>
            <source>打印</source>
            <translation>打印</translation>
        </message>
        <message>
            <source>软件更新</source>
            <translation>软件更新</translation>
        </message>
        <message>
            <source>设备升级</source>
            <translation>设备升级</translation>
        </message>
        <message>
            <source>坐标设置</source>
            <translation>坐标设置</translation>
        </message>
        <message>
            <source>已连接</source>
            <translation>已连接</translation>
        </message>
        <message>
            <source>未连接</source>
            <translation>未连接</translation>
        </message>
        <message>
            <source>connect</source>
            <translation>已连接</translation>
        </message>
        <message>
            <source>disconnect</source>
            <translation>未连接</translation>
        </message>
        <message>
            <source>1、主要流程：连接设备&gt;&gt;获取数据&gt;&gt;选择数据&gt;&gt;地图、图形显示&gt;&gt;数据、图形导出</source>
            <translation>1、主要流程：连接设备&gt;&gt;获取数据&gt;&gt;选择数据&gt;&gt;地图、图形显示&gt;&gt;数据、图形导出</translation>
        </message>
        <message>
            <source>2、获取数据：使用数据线将设备与电脑连接，点击获取数据按钮，软件会自动识别设备，并获取设备中的数据</source>
            <translation>2、获取数据：使用数据线将设备与电脑连接，点击获取数据按钮，软件会自动识别设备，并获取设备中的数据</translation>
        </message>
        <message>
            <source>3、选择数据：可以直接勾选数据，也可以在数据列表中双击数据条目选择数据，还可以勾选全选按钮选中所有数据</source>
            <translation>3、选择数据：可以直接勾选数据，也可以在数据列表中双击数据条目选择数据，还可以勾选全选按钮选中所有数据</translation>
        </message>
        <message>
            <source>4、删除数据：将选中的数据全部删除</source>
            <translation>4、删除数据：将选中的数据全部删除</translation>
        </message>
        <message>
            <source>5、地图显示：地图上会将在数据列表中勾选的数据以图形的方式展现在地图上，并将定位到其地图中心位置，地图必须在有网络的情况下使用</source>
            <translation>5、地图显示：地图上会将在数据列表中勾选的数据以图形的方式展现在地图上，并将定位到其地图中心位置，地图必须在有网络的情况下使用</translation>
        </message>
        <message>
            <source>6、图形显示：在画板上将在数据列表中勾选的数据画成对应的图形（上北下南），每一条数据的图形在起始点位置会有一个小圆圈，并且旁边会有一个数值索引，用于图形导出时与导出信息对应</source>
            <translation>6、图形显示：在画板上将在数据列表中勾选的数据画成对应的图形（上北下南），每一条数据的图形在起始点位置会有一个小圆圈，并且旁边会有一个数值索引，用于图形导出时与导出信息对应</translation>
        </message>
        <message>
            <source>7、数据导出：导出的内容有经纬度，海拔，距离，面积和采集时间等信息，文件格式为可以为CSV、DXF、KML、GPX，导出文件可以保存到一个文件或者进行文件条目单独保存为多个文件，用户可根据实际需要进行选择导出文件保存方式。导出文件以其对应的采集时间命名</source>
            <translation>7、数据导出：导出的内容有经纬度，海拔，距离，面积和采集时间等信息，文件格式为可以为CSV、DXF、KML、GPX，导出文件可以保存到一个文件或者进行文件条目单独保存为多个文件，用户可根据实际需要进行选择导出文件保存方式。导出文件以其对应的采集时间命名</translation>
        </message>
        <message>
            <source>8、数据导入:导出的数据文件进行再次导入到软件进行查看测量距离，面积、测量图形和采集时间等信息</source>
            <translation>8、数据导入:导出的数据文件进行再次导入到软件进行查看测量距离，面积、测量图形和采集时间等信息</translation>
        </message>
        <message>
            <source>9、图形导出：以截图方式保存显示的地图或者图形</source>
            <translation>9、图形导出：以截图方式保存显示的地图或者图形</translation>
        </message>
        <message>
            <source>10、坐标格式：用于设置导出数据的格式，默认格式是“度”</source>
            <translation>10、坐标格式：用于设置导出数据的格式，默认格式是“度”</translation>
        </message>
        <message>
            <source>11、关于：本软件信息</source>
            <translation>11、关于：本软件信息</translation>
        </message>
        <message>
            <source>使用说明</source>
            <translation>使用说明</translation>
        </message>
        <message>
            <source>关于 Velmo</source>
            <translation>关于 Velmo</translation>
        </message>
        <message>
            <source>软件名称：Velmo
软件版本：</source>
            <translation>软件名称：Velmo
软件版本：</translation>
        </message>
        <message>
            <source>资料下载</source>
            <translation>资料下载</translation>
        </message>
        <message>
            <source>功能等待更新</source>
            <translation>功能等待更新</translation>
        </message>
        <message>
            <source>文件</source>
            <translation>文件</translation>
        </message>
        <message>
            <source>导出图形</source>
            <translation>导出图形</translation>
        </message>
        <message>
            <source>导出...</source>
            <translation>导出...</translation>
        </message>
        <message>
            <source>退出</source>
            <translation>退出</translation>
        </message>
        <message>
            <source>设置</source>
            <translation>设置</translation>
        </message>
        <message>
            <source>亩制</source>
            <translation>亩制</translation>
        </message>
        <message>
            <source>小亩</source>
            <translation>小亩</translation>
        </message>
        <message>
            <source>地图选项</source>
            <translation>地图选项</translation>
        </message>
        <message>
            <source>高德地图</source>
            <translation>高德地图</translation>
        </message>
        <message>
            <source>谷歌地图</source>
            <translation>谷歌地图</translation>
        </message>
        <message>
            <source>天地图</source>
            <translation>天地图</translation>
        </message>
        <message>
            <source>帮助</source>
            <translation>帮助</translation>
        </message>
        <message>
            <source>关于Velmo office</source>
            <translation>关于Velmo office</translation>
        </message>
        <message>
            <source>数据列表</source>
            <translation>数据列表</translation>
        </message>
        <message>
            <source>删除</source>
            <translation>删除</translation>
        </message>
        <message>
            <source>删除选中的数据</source>
            <translation>删除选中的数据</translation>
        </message>
        <message>
            <source>全部</source>
            <translation>全部</translation>
        </message>
        <message>
            <source> 面积</source>
            <translation> 面积</translation>
        </message>
        <message>
            <source> 距离</source>
            <translation> 距离</translation>
        </message>
        <message>
            <source>航点</source>
            <translation>航点</translation>
        </message>
        <message>
            <source>航线</source>
            <translation>航线</translation>
        </message>
        <message>
            <source> 航迹</source>
            <translation> 航迹</translation>
        </message>
        <message>
            <source>放样</source>
            <translation>放样</translation>
        </message>
        <message>
            <source>读取进度</source>
            <translation>读取进度</translation>
        </message>
        <message>
            <source> 条目信息</source>
            <translation> 条目信息</translation>
        </message>
        <message>
            <source>总计勾选:</source>
            <translation>总计勾选:</translation>
        </message>
        <message>
            <source>面积:</source>
            <translation>面积:</translation>
        </message>
        <message>
            <source>周长:</source>
            <translation>周长:</translation>
        </message>
        <message>
            <source>条</source>
            <translation>条</translation>
        </message>
        <message>
            <source>平方米</source>
            <translation>平方米</translation>
        </message>
        <message>
            <source>亩</source>
            <translation>亩</translation>
        </message>
        <message>
            <source>米</source>
            <translation>米</translation>
        </message>
        <message>
            <source>测量信息</source>
            <translation>测量信息</translation>
        </message>
        <message>
            <source>已接收</source>
            <translation>已接收</translation>
        </message>
        <message>
            <source>串口指示灯</source>
            <translation>串口指示灯</translation>
        </message>
        <message>
            <source>安卓设备指示灯</source>
            <translation>安卓设备指示灯</translation>
        </message>
        <message>
            <source>获取数据</source>
            <translation>获取数据</translation>
        </message>
        <message>
            <source>从仪器读取测量数据 (F5)</source>
            <translation>从仪器读取测量数据 (F5)</translation>
        </message>
        <message>
            <source>把勾选的数据上传到仪器</source>
            <translation>把勾选的数据上传到仪器</translation>
        </message>
        <message>
            <source>地图</source>
            <translation>地图</translation>
        </message>
        <message>
            <source>显示地图 (Ctrl+1)</source>
            <translation>显示地图 (Ctrl+1)</translation>
        </message>
        <message>
            <source>图形</source>
            <translation>图形</translation>
        </message>
        <message>
            <source>显示图形 (Ctrl+2)</source>
            <translation>显示图形 (Ctrl+2)</translation>
        </message>
        <message>
            <source>打印图形</source>
            <translation>打印图形</translation>
        </message>
        <message>
            <source>检查软件新版本</source>
            <translation>检查软件新版本</translation>
        </message>
        <message>
            <source>升级仪器固件</source>
            <translation>升级仪器固件</translation>
        </message>
        <message>
            <source>厂家主页</source>
            <translation>厂家主页</translation>
        </message>
        <message>
            <source>北</source>
            <translation>北</translation>
        </message>
        <message>
            <source>显示或隐藏测量信息</source>
            <translation>显示或隐藏测量信息</translation>
        </message>
        <message>
            <source>序号</source>
            <translation>序号</translation>
        </message>
        <message>
            <source>数据名称</source>
            <translation>数据名称</translation>
        </message>
        <message>
            <source>采集时间</source>
            <translation>采集时间</translation>
        </message>
        <message>
            <source>ID</source>
            <translation>序号</translation>
        </message>
        <message>
            <source>Data Name</source>
            <translation>数据名称</translation>
        </message>
        <message>
            <source>Acquisition Time</source>
            <translation>采集时间</translation>
        </message>
        <message>
            <source>类型</source>
            <translation>类型</translation>
        </message>
        <message>
            <source>Type</source>
            <translation>类型</translation>
        </message>
        <message>
            <source>全选：%1</source>
            <translation>全选：%1</translation>
        </message>
        <message>
            <source>把勾选的数据导出到文件 (Ctrl+E)</source>
            <translation>把勾选的数据导出到文件 (Ctrl+E)</translation>
        </message>
        <message>
            <source>从文件导入数据 (Ctrl+O)</source>
            <translation>从文件导入数据 (Ctrl+O)</translation>
        </message>
    </context>
    <context>
        <name>thread_key</name>
        <message>
            <source>点</source>
            <translation>点</translation>
        </message>
        <message>
            <source>条</source>
            <translation>条</translation>
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
            <translation>导入</translation>
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
            <translation>导出为</translation>
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
