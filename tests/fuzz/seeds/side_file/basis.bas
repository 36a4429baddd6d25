NAME b
 XU x le
 XL z eq 3.5
 UL y
 LL w
* note
ENDATA
