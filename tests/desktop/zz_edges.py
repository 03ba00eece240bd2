import os, sys, tempfile, shutil, time
from pathlib import Path
from desktop import *
from quillo import *
import quillo
factor=float(os.environ.get("FACTOR","1")); name=os.environ["NAME"]; two=os.environ.get("TWO")
W,H=1280,800
class T(AgentTestCase):
    def test(self):
        if two:
            # Side by side: the icon's screen is the one that holds it.
            run("xrandr","--setmonitor","L",f"{W//2}/169x{H}/211+0+0","screen"); run("xrandr","--setmonitor","R",f"{W//2}/169x{H}/211+{W//2}+0","none")
        self.ctl("settings","set","KeepEntryWindowOnScreen","yes"); self.ctl("settings","set","EscapeClosesEntryWindow","yes"); self.ctl("settings","set","AddLocationAutomatically","no")
        env={"QT_SCALE_FACTOR":str(factor)} if factor!=1 else {}
        agent=self.start_agent(**env)
        icon=tray_icon("quillo-agent")
        time.sleep(.5)
        click(*center(icon)); w=agent.window(); time.sleep(.6)
        x,y,wd,h=window_rect(w)
        shadow=(wd-round(328*factor))//2
        bx,by,bw,bh=x+shadow,y,wd-2*shadow,h-shadow
        sx,sw=(0,W)
        if two:
            sx=0 if center(icon)[0]<W//2 else W//2; sw=W//2
        ok = bx>=sx and bx+bw<=sx+sw and by>=0 and by+bh<=H
        print("RESULT",name,"icon",icon,"window",(bx,by,bw,bh),"screen",(sx,0,sw,H),"OK" if ok else "OFF")
        screenshot(f"{os.environ['PICS']}/edge-{name}.png")
        type_text("at the edge"); press("Escape"); agent.wait_closed()
        assert self.texts()==["at the edge"], self.texts()
